// LOGIN, which no RFC describes: the server asks twice, and gets the name and the password,
// whatever the words of its questions are.
#pragma once

#include "sasl/LoginContext.h"
#include "sasl/Mechanism.h"

namespace quillon {

class LoginMechanism final : public Mechanism {
 public:
  explicit LoginMechanism(const LoginContext& context) : credentials_(context.credentials) {}

  std::string_view Name() const override { return "LOGIN"; }
  std::optional<SaslStep> Begin() override { return std::nullopt; }
  SaslStep Answer(std::string_view challenge) override;
  SaslStep Succeeded(std::string_view finalData) override;

 private:
  const Credentials& credentials_;
  int answers_ = 0;
};

}  // namespace quillon
