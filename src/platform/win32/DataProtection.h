#pragma once

#include "ports/SecretProtector.h"

namespace quillon {

// By the keys that Windows keeps for each account and for the machine.
class DataProtection final : public SecretProtector {
 public:
  std::optional<std::string> Protect(std::string_view secret, Scope scope) override;
  std::optional<std::string> Reveal(std::string_view text) override;
};

}  // namespace quillon
