// SCRAM (RFC 5802, and 7677 for SHA-256): client and server show each other that they know the
// password, and neither tells it. With channel binding (-PLUS) nobody in between can pass on what
// is said.
#pragma once

#include <string>
#include <string_view>

#include "sasl/LoginContext.h"
#include "sasl/Mechanism.h"

namespace quillon {

// What the client says of channel binding.
enum class ScramBinding {
  kNotUsed,        // "n"
  kServerHasNone,  // "y": the client could; a server that has it knows then that somebody took it
                   // out of its list of mechanisms
  kUsed,           // "p": a mechanism -PLUS
};

class ScramMechanism final : public Mechanism {
 public:
  // SHA-1 or SHA-256.
  ScramMechanism(HashAlgorithm hash, ScramBinding binding, const LoginContext& context);

  std::string_view Name() const override;
  std::optional<SaslStep> Begin() override;
  SaslStep Answer(std::string_view challenge) override;
  SaslStep Succeeded(std::string_view finalData) override;

 private:
  enum class State { kNew, kWaitsForFirst, kWaitsForFinal, kServerVerified, kOver };

  SaslStep AnswerFirst(std::string_view serverFirst);
  SaslStep Verify(std::string_view serverFinal);

  const HashAlgorithm hash_;
  const ScramBinding binding_;
  const Credentials& credentials_;
  const ConnectionFacts& connection_;
  const Crypto& crypto_;
  State state_ = State::kNew;
  std::string nonce_;
  std::string header_;           // GS2
  std::string clientFirst_;      // without the header
  std::string serverSignature_;  // that the server has to show
};

}  // namespace quillon
