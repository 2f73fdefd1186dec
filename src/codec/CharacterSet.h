// Bytes in a named character set become text.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

class CodePage;

// UTF-8, US-ASCII and ISO-8859-1 are known by name; anything else is read in the ANSI code page.
// What is not UTF-8 although its name says so is read in the ANSI code page too.
std::string TextFromCharacterSet(std::string_view bytes, std::string_view name,
                                 const CodePage& codePage);

}  // namespace quillon
