// A login by a SASL mechanism, as both protocols make it: what is chosen, what is said, and what of
// it nobody else may see.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "oauth/AccessTokens.h"
#include "sasl/Choice.h"
#include "sasl/Exchange.h"
#include "sasl/LoginContext.h"

namespace quillon {

class SessionLogin {
 public:
  // `system` may be null.
  SessionLogin(Credentials credentials, ConnectionFacts connection, const Crypto& crypto,
               const SystemLogin* system)
      : credentials_(std::move(credentials)),
        connection_(std::move(connection)),
        context_{credentials_, connection_, crypto, system} {}
  SessionLogin(const SessionLogin&) = delete;
  SessionLogin& operator=(const SessionLogin&) = delete;

  // Whether a token has to be had first.
  bool WantsToken(const OAuthAccount& account) const {
    return credentials_.accessToken.empty() && !account.tokenUrl.empty();
  }
  void SetToken(const std::string& token) { credentials_.accessToken = token; }

  // Empty when there is a mechanism; else what is in the way, in whole sentences.
  std::string Choose(const std::vector<std::string>& offered, const LoginRules& rules,
                     std::size_t longestCommand) {
    auto choice = ChooseMechanism(offered, rules, context_);
    mechanism_ = std::move(choice.mechanism);
    if (mechanism_ == nullptr) return choice.reason;
    exchange_ = std::make_unique<Exchange>(*mechanism_, longestCommand);
    return {};
  }

  // Both behind a choice.
  std::string_view Method() const { return mechanism_->Name(); }
  Exchange& TheExchange() { return *exchange_; }

 private:
  Credentials credentials_;
  const ConnectionFacts connection_;
  const LoginContext context_;
  std::unique_ptr<Mechanism> mechanism_;
  std::unique_ptr<Exchange> exchange_;
};

}  // namespace quillon
