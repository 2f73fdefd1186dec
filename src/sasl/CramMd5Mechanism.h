// CRAM-MD5 (RFC 2195): the name, and a digest of the server's challenge made with the password.
#pragma once

#include "sasl/LoginContext.h"
#include "sasl/Mechanism.h"

namespace quillon {

class CramMd5Mechanism final : public Mechanism {
 public:
  explicit CramMd5Mechanism(const LoginContext& context)
      : credentials_(context.credentials), crypto_(context.crypto) {}

  std::string_view Name() const override { return "CRAM-MD5"; }
  std::optional<SaslStep> Begin() override { return std::nullopt; }
  SaslStep Answer(std::string_view challenge) override;
  SaslStep Succeeded(std::string_view finalData) override;

 private:
  const Credentials& credentials_;
  const Crypto& crypto_;
  bool answered_ = false;
};

}  // namespace quillon
