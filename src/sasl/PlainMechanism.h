// PLAIN (RFC 4616): name and password as they are, in one message.
#pragma once

#include "sasl/LoginContext.h"
#include "sasl/Mechanism.h"

namespace quillon {

class PlainMechanism final : public Mechanism {
 public:
  explicit PlainMechanism(const LoginContext& context) : credentials_(context.credentials) {}

  std::string_view Name() const override { return "PLAIN"; }
  std::optional<SaslStep> Begin() override;
  SaslStep Answer(std::string_view challenge) override;
  SaslStep Succeeded(std::string_view) override { return {}; }

 private:
  const Credentials& credentials_;
};

}  // namespace quillon
