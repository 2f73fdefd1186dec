// The first line of a POP3 reply (RFC 1939, section 3) and the pieces of the replies that hold
// numbers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillon {

struct PopReply {
  explicit PopReply(std::string_view line);

  bool positive = false;
  std::string words;  // the server's: what follows "+OK" or "-ERR", else the whole line
};

// A decimal number that the text begins with; it is taken off together with the blanks before and
// behind it.
std::optional<std::uint64_t> TakeNumber(std::string_view& text);

}  // namespace quillon
