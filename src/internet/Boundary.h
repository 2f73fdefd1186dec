// What stands between the parts of a multipart message (RFC 2046, section 5.1.1).
#pragma once

#include <string>
#include <string_view>

namespace quillon {

// The fixed part behind a first character that keeps the boundary out of the text: the first letter
// from A to Z with which it does not occur there. When all of them occur, nine digits follow that
// make it one that does not.
std::string ChooseBoundary(std::string_view text, std::string_view fixedPart);

// The boundaries of a message: that of its outermost parts, of alternatives inside them, and of
// HTML with its pictures. They hold nothing but token characters, so they can stand without quotes.
std::string OuterBoundary(std::string_view text);
std::string InnerBoundary(std::string_view text);
std::string RelatedBoundary(std::string_view text);

}  // namespace quillon
