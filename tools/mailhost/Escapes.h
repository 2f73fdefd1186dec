// The escapes of fault files: \r \n \t \0 \\ and \xHH.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mailhost {

// Throws std::invalid_argument, with the reason, for any other escape.
std::string Unescape(std::string_view text);

// A line pattern: * stands for any text, \* for an asterisk, everything else for itself.
class Pattern {
 public:
  // Escapes as above. Throws std::invalid_argument.
  explicit Pattern(std::string_view text);

  bool Matches(std::string_view line) const;

 private:
  std::vector<std::string> parts_;  // the literal texts around the asterisks
};

}  // namespace mailhost
