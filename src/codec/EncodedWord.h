// Encoded words in header values: =?charset?B?...?= and =?charset?Q?...?= (RFC 2047).
#pragma once

#include <string>
#include <string_view>

namespace quillon {

class CodePage;

// The text with its encoded words decoded; white space between two of them goes. What is malformed
// stays as it is, and bytes outside of encoded words are read in the ANSI code page.
std::string DecodeEncodedWords(std::string_view value, const CodePage& codePage);

}  // namespace quillon
