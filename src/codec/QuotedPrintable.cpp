#include "codec/QuotedPrintable.h"

#include <algorithm>
#include <array>

namespace quillon {
namespace {

constexpr int8_t kNoDigit = -1;

constexpr std::array<int8_t, 256> MakeDigits() {
  std::array<int8_t, 256> digits{};
  digits.fill(kNoDigit);
  for (int8_t value = 0; value < 10; ++value) digits[static_cast<size_t>('0' + value)] = value;
  for (int8_t value = 10; value < 16; ++value) {
    digits[static_cast<size_t>('A' + value - 10)] = value;
    digits[static_cast<size_t>('a' + value - 10)] = value;
  }
  return digits;
}

constexpr std::array<int8_t, 256> kDigits = MakeDigits();

constexpr bool IsBlank(uint8_t character) {
  return character == ' ' || character == '\t';
}

size_t LengthWithoutBlanks(std::span<const uint8_t> text) {
  size_t length = text.size();
  while (length != 0 && IsBlank(text[length - 1])) --length;
  return length;
}

}  // namespace

size_t DecodeQuotedPrintableLine(std::span<const uint8_t> line, uint8_t* out, bool& softBreak,
                                 const CodecKernel& kernel) {
  line = line.first(LengthWithoutBlanks(line));
  softBreak = !line.empty() && line.back() == '=';
  if (softBreak) line = line.first(line.size() - 1);
  return DecodeQuotedPrintablePiece(line, out, kernel);
}

size_t QuotedPrintableCut(std::span<const uint8_t> start) {
  const size_t length = LengthWithoutBlanks(start);
  // The blanks may follow the "=" of a soft break.
  for (size_t back = 1; back <= std::min<size_t>(length, 2); ++back) {
    if (start[length - back] == '=') return length - back;
  }
  return length;
}

size_t DecodeQuotedPrintablePiece(std::span<const uint8_t> piece, uint8_t* out,
                                  const CodecKernel& kernel) {
  const uint8_t* const start = out;
  const uint8_t* at = piece.data();
  const uint8_t* const end = at + piece.size();
  while (at != end) {
    const size_t plain = kernel.copyPlain(at, static_cast<size_t>(end - at), out);
    out += plain;
    at += plain;
    if (at == end) break;
    // Escapes often come in pairs.
    do {
      if (end - at >= 3 && kDigits[at[1]] >= 0 && kDigits[at[2]] >= 0) {
        *out++ = static_cast<uint8_t>(kDigits[at[1]] << 4 | kDigits[at[2]]);
        at += 3;
      } else {
        *out++ = *at++;
      }
    } while (at != end && *at == '=');
  }
  return static_cast<size_t>(out - start);
}

}  // namespace quillon
