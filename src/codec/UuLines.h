// Uuencoded lines over buffers: a length character, groups of four characters for three bytes, CR
// LF.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "codec/kernels/CodecKernel.h"

namespace quillon {

inline constexpr size_t kUuLineBytes = 45;
inline constexpr size_t kUuLineCharacters = 60;
// A line as it stands in a file: length character, characters, CR LF.
inline constexpr size_t kUuLineSize = 1 + kUuLineCharacters + 2;
// Encoding starts anew with each block, which shows only in how the last line of a file is filled
// up.
inline constexpr size_t kUuBlockBytes = 40 * kUuLineBytes;
// The length character that ends the data.
inline constexpr uint8_t kUuEnd = '`';

// The value of a character. Those outside the alphabet, which only damaged data holds, give values
// beyond 63.
constexpr uint8_t UuValue(uint8_t character) {
  return character == '`' ? 0 : static_cast<uint8_t>((character - 32) & 127);
}

// The number of bytes that a line with this length character holds.
constexpr size_t UuLineLength(uint8_t lengthCharacter) {
  return static_cast<size_t>((lengthCharacter - 32) & 127);
}

// How many of the bytes in its groups belong to a line of such a length: the filling of the last
// group does not, but the lengths beyond those of real encoders are taken as whole groups.
constexpr size_t UuBytesKept(size_t lineLength) {
  return lineLength < 63 ? lineLength : (lineLength + 2) / 3 * 3;
}

// What EncodeUuLines writes for so many bytes.
size_t UuEncodedSize(size_t bytes);

// Encodes into lines of 45 bytes and a shorter last one; returns the number of characters written.
// The last group is filled up with copies of the bytes at the end of the block of 1800, or with the
// byte 97 when the block has less than 3. Data that comes in several calls has to come in multiples
// of 1800 bytes but for the last.
size_t EncodeUuLines(std::span<const uint8_t> in, uint8_t* out,
                     const CodecKernel& kernel = BestKernel());

// Decodes the full lines ("M", 60 characters of the alphabet, CR LF, LF or CR) at the start of the
// text for as long as there are any; stops before every other one. `out` has room for 45 bytes for
// each 62 characters. Adds the bytes written to `written` and returns the number of characters
// consumed.
size_t DecodeFullUuLines(std::span<const uint8_t> text, uint8_t* out, size_t& written,
                         const CodecKernel& kernel = BestKernel());

// Decodes the line body `in` into whole groups of 3 bytes, `groups` of them; characters that are
// missing, because a mail system took the blanks from the end of the line, count as blanks.
void DecodeUuGroups(std::span<const uint8_t> in, size_t groups, uint8_t* out,
                    const CodecKernel& kernel = BestKernel());

}  // namespace quillon
