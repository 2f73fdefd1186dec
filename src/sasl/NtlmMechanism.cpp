#include "sasl/NtlmMechanism.h"

#include "sasl/SystemLogins.h"

namespace quillon {

NtlmMechanism::NtlmMechanism(const LoginContext& context)
    : system_(BeginSystemLogin(SystemPackage::kNtlm, context)) {}

std::optional<SaslStep> NtlmMechanism::Begin() {
  auto step = system_->Advance({});
  return SaslStep{std::move(step.response), std::move(step.failure)};
}

SaslStep NtlmMechanism::Answer(std::string_view challenge) {
  if (complete_) return FailLogin("The server asks for more than the login method NTLM has.");
  auto step = system_->Advance(challenge);
  complete_ = step.complete;
  return {std::move(step.response), std::move(step.failure)};
}

SaslStep NtlmMechanism::Succeeded(std::string_view) {
  if (complete_) return {};
  return FailLogin("The server reports a login before it has sent the challenge of NTLM.");
}

}  // namespace quillon
