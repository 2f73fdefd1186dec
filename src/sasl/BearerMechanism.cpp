#include "sasl/BearerMechanism.h"

#include <algorithm>

#include "core/ServerWords.h"
#include "sasl/SaslText.h"

namespace quillon {
namespace {

constexpr char kSeparator = '\x01';

// A token that was read with the line end behind it is the usual mistake.
bool IsToken(std::string_view token) {
  return std::all_of(token.begin(), token.end(), [](char c) { return c > ' ' && c < '\x7F'; });
}

}  // namespace

std::string_view BearerMechanism::Name() const {
  return form_ == BearerForm::kXOAuth2 ? "XOAUTH2" : "OAUTHBEARER";
}

std::optional<SaslStep> BearerMechanism::Begin() {
  if (!IsToken(credentials_.accessToken)) {
    return FailLogin("The access token holds a blank or a character that no token has.");
  }
  if (!IsSaslText(credentials_.loginName)) {
    return FailLogin("The login name holds a control character.");
  }
  return Respond(Message());
}

std::string BearerMechanism::Message() const {
  std::string message;
  if (form_ == BearerForm::kXOAuth2) {
    message.append("user=").append(credentials_.loginName) += kSeparator;
  } else {
    message = Gs2Header("n", credentials_.loginName) + kSeparator;
    if (!connection_.host.empty()) {
      message.append("host=").append(connection_.host) += kSeparator;
      message.append("port=").append(std::to_string(connection_.port)) += kSeparator;
    }
  }
  message.append("auth=Bearer ").append(credentials_.accessToken) += kSeparator;
  return message += kSeparator;
}

SaslStep BearerMechanism::Answer(std::string_view challenge) {
  if (refused_)
    return FailLogin("The server goes on asking after it has refused the access token.");
  refused_ = true;
  serverReason_ = ServerWords(WithoutSecret(challenge, credentials_.accessToken));
  // RFC 7628, 3.2.3.
  return Respond(form_ == BearerForm::kXOAuth2 ? std::string() : std::string(1, kSeparator));
}

SaslStep BearerMechanism::Succeeded(std::string_view) {
  if (!refused_) return {};
  return FailLogin("The server reports a login after it has refused the access token.");
}

}  // namespace quillon
