// Folding of header fields (RFC 5322, section 2.2.3).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillon {

// A line of a header wants to have no more characters; a word that is longer stands whole.
inline constexpr std::size_t kFieldColumns = 76;

// A field on one line, "Name: value" without its line end, in lines of kFieldColumns at most where
// its blanks allow it, each with CR LF behind it. Folds add and take nothing but line ends, none
// stands behind the name, and no line is all blank.
std::string FoldField(std::string_view field);

}  // namespace quillon
