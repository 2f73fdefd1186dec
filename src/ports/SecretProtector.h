// Secrets that are kept in files, readable for one account or on one machine only.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillon {

class SecretProtector {
 public:
  enum class Scope { kAccount, kMachine };

  virtual ~SecretProtector() = default;

  // One line of printable ASCII; none when the system refuses.
  virtual std::optional<std::string> Protect(std::string_view secret, Scope scope) = 0;
  // None for what Protect has not written, or has written elsewhere.
  virtual std::optional<std::string> Reveal(std::string_view text) = 0;
};

}  // namespace quillon
