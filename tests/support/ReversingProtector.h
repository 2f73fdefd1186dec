// Hides a secret from a search for it, for the account whose name it has.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ports/SecretProtector.h"

namespace quillon::testing {

class ReversingProtector final : public SecretProtector {
 public:
  std::optional<std::string> Protect(std::string_view secret, Scope scope) override {
    return Owner(scope) + std::string(secret.rbegin(), secret.rend());
  }
  std::optional<std::string> Reveal(std::string_view text) override {
    for (const auto scope : {Scope::kAccount, Scope::kMachine}) {
      const auto owner = Owner(scope);
      if (text.starts_with(owner)) {
        return std::string(text.rbegin(), text.rend() - static_cast<std::ptrdiff_t>(owner.size()));
      }
    }
    return std::nullopt;
  }

  std::string account = "joe";

 private:
  std::string Owner(Scope scope) const {
    return (scope == Scope::kAccount ? account : "all") + ":";
  }
};

}  // namespace quillon::testing
