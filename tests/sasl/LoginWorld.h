// A client that has everything a login can ask for.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "codec/Base64Word.h"
#include "sasl/Choice.h"
#include "support/KnownRandom.h"

namespace quillon::testing {

struct LoginWorld {
  explicit LoginWorld(std::string_view nonce = "rOprNGfwEbeRWgbNEkqO")
      : crypto(BytesOfBase64Word(nonce).value()) {}

  // As a server offers it alone, or among others.
  std::unique_ptr<Mechanism> Make(std::string_view name, std::vector<std::string> offered = {}) {
    LoginRules rules;
    rules.wanted = {std::string(name)};
    offered.emplace_back(name);
    return ChooseMechanism(offered, rules, context).mechanism;
  }

  KnownRandom crypto;
  Credentials credentials{"", "user", "pencil", "tok.en~+/="};
  ConnectionFacts connection{"mail.example.com", 587, true, {}};
  LoginContext context{credentials, connection, crypto};
};

}  // namespace quillon::testing
