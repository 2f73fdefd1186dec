// GSSAPI (RFC 4752): Kerberos, where the server shows who it is too, or what else the system
// negotiates with a server that takes such messages under this name. Behind the login both ends say
// what they would do with the lines that follow: here nothing, which is what TLS is for.
#pragma once

#include <memory>

#include "sasl/LoginContext.h"
#include "sasl/Mechanism.h"

namespace quillon {

class GssapiMechanism final : public Mechanism {
 public:
  explicit GssapiMechanism(const LoginContext& context);

  std::string_view Name() const override { return "GSSAPI"; }
  std::optional<SaslStep> Begin() override { return Advance({}); }
  SaslStep Answer(std::string_view challenge) override;
  SaslStep Succeeded(std::string_view finalData) override;

 private:
  enum class State { kLogin, kWaitsForLayers, kOver, kFailed };

  SaslStep Advance(std::string_view challenge);
  SaslStep ChooseLayer(std::string_view offer);

  const Credentials& credentials_;
  const std::unique_ptr<SystemContext> system_;
  State state_ = State::kLogin;
};

}  // namespace quillon
