#include "internet/PopReply.h"

#include <charconv>

#include "core/Text.h"

namespace quillon {

PopReply::PopReply(std::string_view line) : positive(EqualsIgnoreCase(line.substr(0, 3), "+OK")) {
  const bool negative = EqualsIgnoreCase(line.substr(0, 4), "-ERR");
  words = Trim(line.substr(positive ? 3 : negative ? 4 : 0));
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
