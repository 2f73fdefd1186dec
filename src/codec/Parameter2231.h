// Writing of the parameters of header fields whose values are not plain ASCII (RFC 2231).
#pragma once

#include <string>
#include <string_view>

#include "codec/EncodedWordWriter.h"

namespace quillon {

// A value in quotes (RFC 5322, section 3.2.4).
std::string QuotedValue(std::string_view value);

// A parameter in its extended form, cut into sections that fit lines of usual length: each begins
// with ";" and a fold. `bytes` are in the character set.
std::string ExtendedParameter(std::string_view name, std::string_view bytes,
                              std::string_view charset);

// A parameter whose value is encoded words within quotes, begun the same way. No standard has it,
// but programs that do not know the extended form read it.
std::string OldParameter(std::string_view name, std::string_view text, std::string_view charset,
                         const CharacterBytes& toBytes);

}  // namespace quillon
