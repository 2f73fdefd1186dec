#include "SmtpPath.h"

#include <cstddef>

#include "Text.h"

namespace mailhost {

namespace {

// The position of the ">" that closes a path; one inside a quoted local part is content.
std::optional<std::size_t> FindClosingBracket(std::string_view path) {
  bool quoted = false;
  for (std::size_t i = 1; i < path.size(); ++i) {
    const char c = path[i];
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F) return std::nullopt;
    if (c == '"') {
      quoted = !quoted;
    } else if (quoted && c == '\\') {
      ++i;
    } else if (!quoted && (c == ' ' || c == '<')) {
      return std::nullopt;
    } else if (!quoted && c == '>') {
      return i;
    }
  }
  return std::nullopt;
}

// Drops a source route, as in <@one,@two:user@host> (RFC 5321 appendix C).
std::string_view WithoutRoute(std::string_view path) {
  if (!path.starts_with('@')) return path;
  const std::size_t colon = path.find(':');
  return colon == std::string_view::npos ? path : path.substr(colon + 1);
}

}  // namespace

std::optional<SmtpPath> ParseSmtpPath(std::string_view argument, std::string_view keyword) {
  if (!StartsIgnoringCase(argument, keyword)) return std::nullopt;
  std::string_view rest = Trim(argument.substr(keyword.size()));
  if (!rest.starts_with('<')) return std::nullopt;
  const std::optional<std::size_t> end = FindClosingBracket(rest);
  if (!end) return std::nullopt;

  SmtpPath path;
  path.address = WithoutRoute(rest.substr(1, *end - 1));
  rest.remove_prefix(*end + 1);
  if (!rest.empty() && rest.front() != ' ') return std::nullopt;
  while (!rest.empty()) path.parameters.emplace_back(TakeWord(rest));
  return path;
}

}  // namespace mailhost
