// NTLM, as [MS-SMTPNTLM] and [MS-POP3] carry it: the system's own messages, three of them. The
// server does not show that it knows the password.
#pragma once

#include <memory>

#include "sasl/LoginContext.h"
#include "sasl/Mechanism.h"

namespace quillon {

class NtlmMechanism final : public Mechanism {
 public:
  explicit NtlmMechanism(const LoginContext& context);

  std::string_view Name() const override { return "NTLM"; }
  std::optional<SaslStep> Begin() override;
  bool WaitsForServer() const override { return true; }
  SaslStep Answer(std::string_view challenge) override;
  SaslStep Succeeded(std::string_view finalData) override;

 private:
  const std::unique_ptr<SystemContext> system_;
  bool complete_ = false;
};

}  // namespace quillon
