// Base64 of RFC 2045, section 6.8, over buffers: lines of 76 characters out, anything that senders
// write in.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "codec/kernels/CodecKernel.h"

namespace quillon {

// "=" among the values of characters.
inline constexpr uint8_t kBase64Padding = 200;

// The 6-bit value of a character, kBase64Padding for "="; any other byte stands for itself.
uint8_t Base64Value(uint8_t character);

// The character of a 6-bit value; any other value stands for itself.
uint8_t Base64Character(uint8_t value);

// The 3 bytes that four values make. Values beyond 63, which only damaged data holds, spill into
// their neighbours.
std::array<uint8_t, 3> Base64Bytes(const std::array<uint8_t, 4>& values);

// What EncodeBase64Lines writes for so many bytes: whole lines of 78 characters and a shorter last
// one, each with CR LF.
size_t Base64EncodedSize(size_t bytes);

// Encodes into lines and returns the number of characters written, which is
// Base64EncodedSize(in.size()). Data that comes in several calls has to come in multiples of 57
// bytes but for the last.
size_t EncodeBase64Lines(std::span<const uint8_t> in, uint8_t* out,
                         const CodecKernel& kernel = BestKernel());

// Decodes characters that may come in any pieces. White space is skipped wherever it stands, "="
// ends a group and the next character starts another (files joined after encoding), the padding may
// be missing. A byte outside the alphabet is carried through with its own value, as Base64Value
// gives it.
class Base64Decoder {
 public:
  explicit Base64Decoder(const CodecKernel& kernel = BestKernel()) : kernel_(&kernel) {}

  // Room that Decode wants for so many characters.
  static constexpr size_t Capacity(size_t characters) { return (characters / 4 + 1) * 3; }

  // Returns the number of bytes written.
  size_t Decode(std::span<const uint8_t> in, uint8_t* out);

  // Writes what an incomplete last group holds (at most 2 bytes) and makes the decoder ready for
  // other data.
  size_t Finish(uint8_t* out);

 private:
  size_t Put(uint8_t character, uint8_t* out);

  const CodecKernel* kernel_;
  std::array<uint8_t, 4> group_{};
  size_t groupSize_ = 0;
  size_t column_ = 0;  // characters of the current line so far
  size_t lineLength_ =
      kBase64LineCharacters;  // of the line before: lines are nearly always equally long
};

}  // namespace quillon
