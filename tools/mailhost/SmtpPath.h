// The arguments of MAIL and RCPT: "FROM:<path> KEY=VALUE ..." (RFC 5321 4.1.2).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mailhost {

struct SmtpPath {
  std::string address;  // without the angle brackets and a source route; empty for <>
  std::vector<std::string> parameters;
};

// `keyword` is "FROM:" or "TO:". Blanks after the colon are tolerated, as real servers do; a path
// without angle brackets is not.
std::optional<SmtpPath> ParseSmtpPath(std::string_view argument, std::string_view keyword);

}  // namespace mailhost
