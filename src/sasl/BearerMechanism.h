// An OAuth 2 access token, as OAUTHBEARER (RFC 7628) and its forerunner XOAUTH2 carry it. A server
// that refuses one says why, in JSON, waits for a word of acknowledgement, and only then says that
// the login has failed.
#pragma once

#include "sasl/LoginContext.h"
#include "sasl/Mechanism.h"

namespace quillon {

enum class BearerForm { kOAuthBearer, kXOAuth2 };

class BearerMechanism final : public Mechanism {
 public:
  BearerMechanism(BearerForm form, const LoginContext& context)
      : form_(form), credentials_(context.credentials), connection_(context.connection) {}

  std::string_view Name() const override;
  std::optional<SaslStep> Begin() override;
  SaslStep Answer(std::string_view challenge) override;
  SaslStep Succeeded(std::string_view finalData) override;
  std::string ServerReason() const override { return serverReason_; }

 private:
  std::string Message() const;

  const BearerForm form_;
  const Credentials& credentials_;
  const ConnectionFacts& connection_;
  bool refused_ = false;
  std::string serverReason_;
};

}  // namespace quillon
