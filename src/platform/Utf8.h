// UTF-8 character by character.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

inline void AppendUtf8(std::string& text, char32_t character) {
  const auto put = [&text](char32_t byte) {
    text.push_back(static_cast<char>(static_cast<unsigned char>(byte)));
  };
  if (character < 0x80) return put(character);
  if (character < 0x800) {
    put(0xC0 | (character >> 6));
  } else if (character < 0x10000) {
    put(0xE0 | (character >> 12));
    put(0x80 | ((character >> 6) & 0x3F));
  } else {
    put(0xF0 | (character >> 18));
    put(0x80 | ((character >> 12) & 0x3F));
    put(0x80 | ((character >> 6) & 0x3F));
  }
  put(0x80 | (character & 0x3F));
}

// Takes the first character off a text that is not empty. A malformed sequence is U+FFFD and loses
// at least one byte.
inline char32_t TakeUtf8(std::string_view& text) {
  const auto byteAt = [&text](std::size_t index) -> char32_t {
    return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
  };
  const char32_t lead = byteAt(0);
  const std::size_t length = lead < 0x80   ? 1
                             : lead < 0xC2 ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  char32_t character = length < 2 ? lead : lead & (0x7FU >> length);
  std::size_t taken = 1;
  while (taken < length && (byteAt(taken) & 0xC0U) == 0x80U) {
    character = (character << 6) | (byteAt(taken++) & 0x3FU);
  }
  text.remove_prefix(taken);
  const bool overlong = (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
  const bool surrogate = character >= 0xD800 && character < 0xE000;
  const bool valid = length == taken && !overlong && !surrogate && character < 0x110000;
  return valid ? character : 0xFFFD;
}

}  // namespace quillon
