#include "sasl/CramMd5Mechanism.h"

#include "core/HexDigit.h"

namespace quillon {

SaslStep CramMd5Mechanism::Answer(std::string_view challenge) {
  if (answered_) return FailLogin("The server asks for more than the login method CRAM-MD5 has.");
  // The digest of nothing would be the same each time, and whoever heard it could log in.
  if (challenge.empty()) return FailLogin("The server's challenge for CRAM-MD5 is empty.");
  answered_ = true;
  const std::string digest = crypto_.Hmac(HashAlgorithm::kMd5, credentials_.password, challenge);
  return Respond(credentials_.loginName + ' ' + HexText(digest));
}

SaslStep CramMd5Mechanism::Succeeded(std::string_view) {
  if (answered_) return {};
  return FailLogin("The server reports a login before it has sent a challenge.");
}

}  // namespace quillon
