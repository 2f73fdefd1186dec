// UTF-8 and UTF-16. Every sequence of UTF-16 units survives the way to UTF-8 and back, unpaired
// surrogates included: those stand as three bytes each, the form known as WTF-8.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

void AppendUtf8(std::string& text, char32_t character);

// Takes the first character off a text that is not empty. A byte that starts no whole sequence is
// U+FFFD.
char32_t TakeUtf8(std::string_view& text);

// Whether the bytes are UTF-8 throughout (RFC 3629).
bool IsUtf8(std::string_view bytes);

std::string Utf8FromUtf16(std::u16string_view units);

// Bytes that are not UTF-8 become U+FFFD, one for each.
std::u16string Utf16FromUtf8(std::string_view text);

}  // namespace quillon
