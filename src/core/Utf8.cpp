#include "core/Utf8.h"

#include <cstdint>

namespace quillon {

namespace {

constexpr char16_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

void AppendUtf8(std::string& text, char32_t point) {
  const auto tail = [&](unsigned shift) {
    text += static_cast<char>(0x80U | ((point >> shift) & 0x3FU));
  };
  if (point < 0x80) {
    text += static_cast<char>(point);
  } else if (point < 0x800) {
    text += static_cast<char>(0xC0U | (point >> 6U));
    tail(0);
  } else if (point < 0x10000) {
    text += static_cast<char>(0xE0U | (point >> 12U));
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0U | (point >> 18U));
    tail(12);
    tail(6);
    tail(0);
  }
}

struct Decoded {
  char32_t point = 0;
  std::size_t length = 0;  // 0: the byte starts no sequence
};

Decoded DecodeSequence(std::string_view text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  const std::size_t length = lead < 0xC2   ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  if (length == 0 || at + length > text.size()) return {};
  char32_t point = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(text[at + i]);
    if ((byte & 0xC0U) != 0x80U) return {};
    point = point << 6U | (byte & 0x3FU);
  }
  const bool shortest = length == 2 || (length == 3 ? point >= 0x800 : point >= 0x10000);
  if (!shortest || point > 0x10FFFF) return {};
  return {point, length};
}

}  // namespace

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
  for (std::size_t at = 0; at < text.size();) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x80) {
      units += static_cast<char16_t>(byte);
      ++at;
      continue;
    }
    const auto [point, length] = DecodeSequence(text, at);
    if (length == 0) {
      units += kReplacement;
      ++at;
    } else if (point < 0x10000) {
      units += static_cast<char16_t>(point);
      at += length;
    } else {
      units += static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10U));
      units += static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FFU));
      at += length;
    }
  }
  return units;
}

}  // namespace quillon
