#include "internet/PopReply.h"

#include <charconv>

#include "core/Text.h"

namespace quillon {

PopReply ParsePopReply(std::string_view line) {
  if (EqualsIgnoreCase(line.substr(0, 3), "+OK")) return {true, Trim(line.substr(3))};
  if (EqualsIgnoreCase(line.substr(0, 4), "-ERR")) return {false, Trim(line.substr(4))};
  return {false, Trim(line)};
}

std::optional<std::uint64_t> TakeNumber(std::string_view& text) {
  text = Trim(text);
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  text = Trim(text);
  return number;
}

}  // namespace quillon
