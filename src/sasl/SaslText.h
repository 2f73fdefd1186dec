// Names and passwords inside SASL messages.
//
// RFC 4013 (SASLprep) would have clients normalise them. Here ASCII goes as it is, which is what
// the rules give; other characters go as UTF-8 as they were given, without normalisation, so a
// password with an accent has to be given in the form that the server holds. What the rules forbid
// as a control character is refused.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

// Whether a text may stand in such a message: UTF-8 without control characters.
bool IsSaslText(std::string_view text);

// With "=" and "," as RFC 5802, 5.1, writes them in a name.
std::string SaslName(std::string_view name);

// The header of RFC 5801, 4: `binding` is "n", "y" or "p=TYPE".
std::string Gs2Header(std::string_view binding, std::string_view authorization);

}  // namespace quillon
