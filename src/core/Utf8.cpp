#include "core/Utf8.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace quillon {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

struct Decoded {
  char32_t point = 0;
  std::size_t length = 0;  // 0: the byte starts no sequence
};

Decoded DecodeSequence(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  const std::size_t length = lead < 0xC2   ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  if (length == 0 || length > text.size()) return {};
  char32_t point = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0U) != 0x80U) return {};
    point = point << 6U | (byte & 0x3FU);
  }
  const bool shortest = length == 2 || (length == 3 ? point >= 0x800 : point >= 0x10000);
  if (!shortest || point > 0x10FFFF) return {};
  return {point, length};
}

// How much of it is ASCII, of the first eight bytes at most. Most text is that.
std::size_t AsciiPrefix(std::string_view text) {
  std::uint64_t word = 0;
  if (text.size() >= sizeof word) {
    std::memcpy(&word, text.data(), sizeof word);
    return static_cast<std::size_t>(std::countr_zero(word & 0x8080808080808080U)) / 8;
  }
  std::size_t size = 0;
  while (size < text.size() && static_cast<unsigned char>(text[size]) < 0x80) ++size;
  return size;
}

// Two bytes are most of what is left.
bool BeginsWithTwoByteSequence(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text[0]);
  return lead >= 0xC2 && lead < 0xE0 && text.size() > 1 &&
         (static_cast<unsigned char>(text[1]) & 0xC0U) == 0x80U;
}

}  // namespace

void AppendUtf8(std::string& text, char32_t character) {
  const auto tail = [&](unsigned shift) {
    text += static_cast<char>(0x80U | ((character >> shift) & 0x3FU));
  };
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0U | (character >> 6U));
    tail(0);
  } else if (character < 0x10000) {
    text += static_cast<char>(0xE0U | (character >> 12U));
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0U | (character >> 18U));
    tail(12);
    tail(6);
    tail(0);
  }
}

char32_t TakeUtf8(std::string_view& text) {
  const auto byte = static_cast<unsigned char>(text[0]);
  const auto [point, length] = byte < 0x80 ? Decoded{byte, 1} : DecodeSequence(text);
  text.remove_prefix(length == 0 ? 1 : length);
  return length == 0 ? kReplacement : point;
}

bool IsUtf8(std::string_view bytes) {
  while (true) {
    bytes.remove_prefix(AsciiPrefix(bytes));
    if (bytes.empty()) return true;
    while (!bytes.empty() && BeginsWithTwoByteSequence(bytes)) bytes.remove_prefix(2);
    if (bytes.empty() || static_cast<unsigned char>(bytes[0]) < 0x80) continue;
    const auto [point, length] = DecodeSequence(bytes);
    if (length == 0 || IsHighSurrogate(point) || IsLowSurrogate(point)) return false;
    bytes.remove_prefix(length);
  }
}

std::string Utf8FromUtf16(std::u16string_view units) {
  std::string text;
  text.reserve(units.size());
  for (std::size_t i = 0; i < units.size(); ++i) {
    char32_t point = units[i];
    if (IsHighSurrogate(point) && i + 1 < units.size() && IsLowSurrogate(units[i + 1])) {
      point = 0x10000 + ((point - 0xD800) << 10U) + (units[++i] - 0xDC00U);
    }
    AppendUtf8(text, point);
  }
  return text;
}

std::u16string Utf16FromUtf8(std::string_view text) {
  std::u16string units;
  units.reserve(text.size());
  while (!text.empty()) {
    const auto character = TakeUtf8(text);
    if (character < 0x10000) {
      units += static_cast<char16_t>(character);
    } else {
      units += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10U));
      units += static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FFU));
    }
  }
  return units;
}

}  // namespace quillon
