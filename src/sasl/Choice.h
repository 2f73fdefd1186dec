// Which mechanism a login takes.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sasl/LoginContext.h"
#include "sasl/Mechanism.h"

namespace quillon {

struct LoginRules {
  std::vector<std::string> wanted;  // names in order; empty: the strongest that both sides have
  bool plainTextLogin = false;      // secrets may go over a connection that is not encrypted
  bool avoidSystem = false;  // an automatic choice leaves out the logins that the system makes

  bool operator==(const LoginRules&) const = default;
};

// The names of mechanisms, and of the logins that are POP3's own (APOP, USER), as people write
// them: in any case, separated by blanks or commas. They come back in capitals; none of them when
// one is not known here.
std::optional<std::vector<std::string>> ReadMechanismNames(std::string_view text);

// Whether a login that the system makes is among them, which can do without name and password: then
// it is that of the account which the process runs under.
bool NamesSystemLogin(const std::vector<std::string>& names);

// One of the two is set. The reason says what the server offers and what is in the way, in whole
// sentences.
struct LoginChoice {
  std::unique_ptr<Mechanism> mechanism;
  std::string reason;
};

// `offered` are the words behind "AUTH" or "SASL" among the server's capabilities, case aside. Who
// has given an access token wants it used: the automatic choice tries it before the password.
//
// What is offered over an unencrypted connection may have been changed by somebody in between, so
// nothing that tells a secret is taken there unless the rules say so; nor is it taken because
// something stronger is not there. A login that the system makes is taken there only when it is
// wanted by name, and so is that of its own account anywhere.
LoginChoice ChooseMechanism(const std::vector<std::string>& offered, const LoginRules& rules,
                            const LoginContext& context);

}  // namespace quillon
