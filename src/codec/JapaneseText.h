// The two other forms of JIS X 0208 in mail, as Shift_JIS: one table of the system serves all
// three, also where it has no other.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillon {

// ISO-2022-JP (RFC 1468), with the half-width katakana of its later forms. None when a byte has the
// eighth bit, an escape sequence is another one or does not end, or a character lacks its second
// byte.
std::optional<std::string> ShiftJisFromIso2022(std::string_view bytes);

// EUC-JP. None for a byte that stands where it cannot, and for characters of JIS X 0212, which
// Shift_JIS does not have.
std::optional<std::string> ShiftJisFromEuc(std::string_view bytes);

}  // namespace quillon
