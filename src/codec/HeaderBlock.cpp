#include "codec/HeaderBlock.h"

#include "core/Text.h"

namespace quillon {

namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}

std::string_view TrimAll(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// Takes the next line, without its line end, off the text.
std::string_view TakeLine(std::string_view& text) {
  const auto end = text.find('\n');
  auto line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

}  // namespace

std::string FindHeaderValue(std::string_view header, std::string_view name) {
  auto wanted = TrimAll(name);
  if (wanted.ends_with(':')) wanted = TrimAll(wanted.substr(0, wanted.size() - 1));
  while (!header.empty()) {
    const auto line = TakeLine(header);
    const auto colon = line.find(':');
    if (colon == std::string_view::npos || IsBlank(line[0]) ||
        !EqualsIgnoreCase(TrimAll(line.substr(0, colon)), wanted)) {
      continue;
    }
    std::string value(TrimAll(line.substr(colon + 1)));
    while (!header.empty() && IsBlank(header[0])) {
      const auto fold = TrimAll(TakeLine(header));
      if (fold.empty()) continue;
      if (!value.empty()) value += ' ';
      value += fold;
    }
    return value;
  }
  return {};
}

}  // namespace quillon
