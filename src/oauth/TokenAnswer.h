// The answer of a token endpoint (RFC 6749, 5.1 and 5.2).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ports/EventLoop.h"
#include "ports/HttpsClient.h"

namespace quillon {

struct TokenAnswer {
  std::string failure;   // empty: there is a token; else a sentence
  std::string error;     // the provider's own code of the failure, if any
  bool passing = false;  // asking again may help
  std::string accessToken;
  std::string refreshToken;  // empty: none, or the one that was used stays good
  TickCount lifetime = 0;    // of the access token, in milliseconds
};

// `url` and `secrets` as ReadProviderAnswer has them.
TokenAnswer ReadTokenAnswer(const HttpsAnswer& answer, std::string_view url,
                            const std::vector<std::string>& secrets);

}  // namespace quillon
