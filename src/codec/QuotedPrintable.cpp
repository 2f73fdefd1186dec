#include "codec/QuotedPrintable.h"

#include <algorithm>
#include <cstring>

#include "codec/kernels/QuotedPrintableDecoder.h"

namespace quillon {
namespace {

constexpr bool IsBlank(uint8_t character) {
  return character == ' ' || character == '\t';
}

size_t LengthWithoutBlanks(std::span<const uint8_t> text) {
  size_t length = text.size();
  while (length != 0 && IsBlank(text[length - 1])) --length;
  return length;
}

// The text without what follows its last visible character, be it blanks or a soft break.
std::span<const uint8_t> WithoutEnd(std::span<const uint8_t> text, bool& softBreak) {
  text = text.first(LengthWithoutBlanks(text));
  softBreak = !text.empty() && text.back() == '=';
  return text.first(text.size() - (softBreak ? 1 : 0));
}

}  // namespace

size_t DecodeQuotedPrintableLine(std::span<const uint8_t> line, uint8_t* out, bool& softBreak) {
  return DecodeQuotedPrintablePiece(WithoutEnd(line, softBreak), out);
}

size_t DecodeQuotedPrintableLines(std::span<const uint8_t> lines, uint8_t* out, bool& softBreak,
                                  const CodecKernel& kernel) {
  lines = WithoutEnd(lines, softBreak);
  return kernel.decodeQuotedPrintable(lines.data(), lines.size(), out);
}

size_t QuotedPrintableCut(std::span<const uint8_t> start) {
  const size_t length = LengthWithoutBlanks(start);
  // The blanks may follow the "=" of a soft break.
  for (size_t back = 1; back <= std::min<size_t>(length, 2); ++back) {
    if (start[length - back] == '=') return length - back;
  }
  return length;
}

size_t DecodeQuotedPrintablePiece(std::span<const uint8_t> piece, uint8_t* out) {
  const uint8_t* const start = out;
  const uint8_t* at = piece.data();
  const uint8_t* const end = at + piece.size();
  while (at != end) {
    const auto left = static_cast<size_t>(end - at);
    const void* const found = std::memchr(at, '=', left);
    const size_t plain =
        found == nullptr ? left : static_cast<size_t>(static_cast<const uint8_t*>(found) - at);
    std::memcpy(out, at, plain);
    out += plain;
    at += plain;
    // Escapes often come in pairs.
    while (at != end && *at == '=') {
      const bool escape = DecodeEscape(at, end, *out);
      if (!escape) *out = *at;
      ++out;
      at += escape ? 3 : 1;
    }
  }
  return static_cast<size_t>(out - start);
}

}  // namespace quillon
