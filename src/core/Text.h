// Small helpers for UTF-8 text. Case is folded for ASCII letters only, which is what keywords and
// field names need.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillon {

// Without leading and trailing blanks (other white space stays).
std::string_view Trim(std::string_view text);
std::string TrimmedCopy(std::string_view text);

constexpr char UpperAscii(char c) noexcept {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
std::string UpperAscii(std::string_view text);
std::string LowerAscii(std::string_view text);

// Here, because tables are searched with it and most comparisons end at the length or the first
// letter.
constexpr bool EqualsIgnoreCase(std::string_view left, std::string_view right) noexcept {
  return left.size() == right.size() &&
         std::equal(left.begin(), left.end(), right.begin(),
                    [](char a, char b) { return UpperAscii(a) == UpperAscii(b); });
}

// The pieces between the delimiters; an empty text is one empty piece.
std::vector<std::string> Split(std::string_view text, std::string_view delimiter);
std::string Join(const std::vector<std::string>& items, std::string_view delimiter);

// How many UTF-16 units the text takes: the length that an automation client sees.
std::size_t Utf16Length(std::string_view text);

}  // namespace quillon
