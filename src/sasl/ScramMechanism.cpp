#include "sasl/ScramMechanism.h"

#include <cstddef>

#include "codec/Base64Word.h"
#include "core/ServerWords.h"
#include "sasl/SaslText.h"
#include "sasl/ScramMessage.h"

namespace quillon {
namespace {

constexpr std::size_t kNonceBytes = 18;  // without padding in base64

std::string DifferentBits(std::string left, std::string_view right) {
  for (std::size_t i = 0; i < left.size(); ++i) left[i] = static_cast<char>(left[i] ^ right[i]);
  return left;
}

std::size_t DigestSize(HashAlgorithm hash) {
  return hash == HashAlgorithm::kSha1 ? 20 : 32;
}

}  // namespace

ScramMechanism::ScramMechanism(HashAlgorithm hash, ScramBinding binding,
                               const LoginContext& context)
    : hash_(hash),
      binding_(binding),
      credentials_(context.credentials),
      connection_(context.connection),
      crypto_(context.crypto) {}

std::string_view ScramMechanism::Name() const {
  if (hash_ == HashAlgorithm::kSha1) {
    return binding_ == ScramBinding::kUsed ? "SCRAM-SHA-1-PLUS" : "SCRAM-SHA-1";
  }
  return binding_ == ScramBinding::kUsed ? "SCRAM-SHA-256-PLUS" : "SCRAM-SHA-256";
}

std::optional<SaslStep> ScramMechanism::Begin() {
  for (const std::string* const text :
       {&credentials_.authorization, &credentials_.loginName, &credentials_.password}) {
    if (!IsSaslText(*text)) {
      return FailLogin("The login name or the password holds a control character.");
    }
  }
  switch (binding_) {
    case ScramBinding::kNotUsed:
      header_ = Gs2Header("n", credentials_.authorization);
      break;
    case ScramBinding::kServerHasNone:
      header_ = Gs2Header("y", credentials_.authorization);
      break;
    case ScramBinding::kUsed:
      header_ = Gs2Header("p=" + connection_.binding.type, credentials_.authorization);
      break;
  }
  nonce_ = Base64Word(crypto_.RandomBytes(kNonceBytes));
  clientFirst_ = "n=" + SaslName(credentials_.loginName) + ",r=" + nonce_;
  state_ = State::kWaitsForFirst;
  return Respond(header_ + clientFirst_);
}

SaslStep ScramMechanism::Answer(std::string_view challenge) {
  switch (state_) {
    case State::kWaitsForFirst:
      return AnswerFirst(challenge);
    case State::kWaitsForFinal:
      return Verify(challenge);
    default:
      state_ = State::kOver;
      return FailLogin("The server asks for more than the login method SCRAM has.");
  }
}

// RFC 5802, 3.
SaslStep ScramMechanism::AnswerFirst(std::string_view serverFirst) {
  state_ = State::kOver;
  const auto first = ReadScramServerFirst(serverFirst, nonce_);
  if (!first.failure.empty()) return FailLogin(first.failure);
  const std::string_view binding = binding_ == ScramBinding::kUsed
                                       ? std::string_view(connection_.binding.data)
                                       : std::string_view();
  std::string clientFinal = "c=" + Base64Word(header_ + std::string(binding)) + ",r=" + first.nonce;
  const std::string exchanged = clientFirst_ + ',' + std::string(serverFirst) + ',' + clientFinal;
  const std::string salted =
      crypto_.Pbkdf2(hash_, credentials_.password, first.salt, first.iterations, DigestSize(hash_));
  const std::string clientKey = crypto_.Hmac(hash_, salted, "Client Key");
  const std::string signature = crypto_.Hmac(hash_, crypto_.Digest(hash_, clientKey), exchanged);
  serverSignature_ = crypto_.Hmac(hash_, crypto_.Hmac(hash_, salted, "Server Key"), exchanged);
  clientFinal += ",p=" + Base64Word(DifferentBits(clientKey, signature));
  state_ = State::kWaitsForFinal;
  return Respond(std::move(clientFinal));
}

SaslStep ScramMechanism::Verify(std::string_view serverFinal) {
  state_ = State::kOver;
  const auto read = ReadScramServerFinal(serverFinal);
  if (!read.failure.empty()) return FailLogin(read.failure);
  if (!read.error.empty()) {
    return FailLogin("The server has refused the SCRAM login: " +
                     ServerWords(WithoutSecret(read.error, credentials_.password)));
  }
  if (!EqualSecrets(read.signature, serverSignature_)) {
    return FailLogin(
        "The server does not know the password, so it is not the one that it claims to be.");
  }
  state_ = State::kServerVerified;
  return Respond({});
}

SaslStep ScramMechanism::Succeeded(std::string_view finalData) {
  if (state_ == State::kWaitsForFinal && !finalData.empty()) return Verify(finalData);
  if (state_ == State::kServerVerified && finalData.empty()) return {};
  state_ = State::kOver;
  return FailLogin(
      "The server reports a login, but has not shown that it knows the password, so it may not be "
      "the one that it claims to be.");
}

}  // namespace quillon
