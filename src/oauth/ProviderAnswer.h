// What a provider of accounts has answered, and its refusals as words (RFC 6749, 5.2).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "oauth/JsonObject.h"
#include "ports/EventLoop.h"
#include "ports/HttpsClient.h"

namespace quillon {

struct ProviderAnswer {
  JsonObject members;    // of a success
  std::string failure;   // empty: a success; else a sentence
  std::string error;     // the provider's own code of the failure, if any: "invalid_grant"
  bool passing = false;  // a failure of the road or the server, so that asking again may help
};

// `url` is the address that was asked. The secrets are those that were sent: a provider may repeat
// them, and the failure does not.
ProviderAnswer ReadProviderAnswer(const HttpsAnswer& answer, std::string_view url,
                                  const std::vector<std::string>& secrets);

// The failure of an answer that says what cannot be, as "has no access token".
std::string WrongAnswer(std::string_view url, std::string_view what);

// The number of seconds that a provider names, no more than `most`; without one that makes sense
// `otherwise`.
TickCount SecondsOf(const JsonObject& members, std::string_view name, int otherwise, int most);

// Whether it can be asked at all: "https://" and a host, without blanks and control characters.
bool IsProviderUrl(std::string_view url);

}  // namespace quillon
