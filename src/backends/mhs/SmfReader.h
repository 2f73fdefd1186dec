// Reads messages of SMF-70 and SMF-71. Whatever the bytes hold, what can be read of them is: digits
// before the name of a field go, a line that begins with white space continues the one before, and
// a line that is no field begins the text, also without an empty line before it.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "backends/mhs/SmfMessage.h"

namespace quillon {

// So many bytes of fields are kept of one message.
inline constexpr std::size_t kMostSmfHead = 256 * 1024;

// No value when the first line is not that of a message. Works with the beginning of a message too:
// then its head may end where the bytes do.
std::optional<SmfMessage> ReadSmf(std::string_view bytes);

}  // namespace quillon
