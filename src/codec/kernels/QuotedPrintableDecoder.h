// The way through quoted-printable text that all kernels take: the bytes at which something has to
// be done are found 64 at a time, and what lies between them is copied without looking at it.
//
// Marker::Marks gives a bit for each "=", CR and LF of a block, the lowest for its first byte. Each
// kernel compiles this with the instructions it knows, inlined into a function of its target.
#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "codec/kernels/CodecKernel.h"

namespace quillon {

inline constexpr size_t kMarkBlock = 64;

constexpr std::array<uint8_t, 256> MakeHexadecimalDigits() {
  constexpr uint8_t kNoDigit = 0xFF;
  std::array<uint8_t, 256> digits{};
  digits.fill(kNoDigit);
  for (uint8_t value = 0; value < 10; ++value) digits[static_cast<size_t>('0' + value)] = value;
  for (uint8_t value = 10; value < 16; ++value) {
    digits[static_cast<size_t>('A' + value - 10)] = value;
    digits[static_cast<size_t>('a' + value - 10)] = value;
  }
  return digits;
}

// More than 15 for what is no digit.
inline constexpr std::array<uint8_t, 256> kHexadecimalDigits = MakeHexadecimalDigits();

// Decodes "=" and two digits there into the byte; false when there is something else.
inline bool DecodeEscape(const uint8_t* at, const uint8_t* end, uint8_t& byte) {
  if (end - at < 3) return false;
  const unsigned high = kHexadecimalDigits[at[1]];
  const unsigned low = kHexadecimalDigits[at[2]];
  if ((high | low) > 15U) return false;
  byte = static_cast<uint8_t>(high << 4U | low);
  return true;
}

template <typename Marker>
class QuotedPrintableDecoder {
 public:
  QuotedPrintableDecoder(const uint8_t* in, size_t size, uint8_t* out)
      : begin_(in), end_(in + size), at_(in), out_(out) {}

  // Returns the end of what was written.
  uint8_t* Run() {
    // A whole block is copied from anywhere in the last one that is looked at.
    while (Left(at_) >= 2 * kMarkBlock) {
      Blocks(std::min(Left(at_) / kMarkBlock - 1, kMostBlocks));
    }
    while (at_ != end_) {
      if (IsMarked(*at_)) {
        Marked();
      } else {
        *out_++ = *at_++;
      }
    }
    return out_;
  }

 private:
  static constexpr size_t kMostBlocks = 16;

  size_t Left(const uint8_t* from) const { return static_cast<size_t>(end_ - from); }

  // Finding the marks first lets the processor do that while it waits for a decision below.
  void Blocks(size_t blocks) {
    std::array<uint64_t, kMostBlocks> marks;
    const uint8_t* block = at_;
    for (size_t i = 0; i < blocks; ++i) {
      const uint64_t found = Marker::Marks(block + i * kMarkBlock);
      // Whatever comes right behind a mark is seen to together with it.
      marks[i] = found & ~(found << 1);
    }
    for (size_t i = 0; i < blocks; ++i, block += kMarkBlock) Block(block, marks[i]);
  }

  void Block(const uint8_t* block, uint64_t marks) {
    for (; marks != 0; marks &= marks - 1) {
      const uint8_t* const place = block + __builtin_ctzll(marks);
      if (place < at_) continue;
      CopyUpTo(place);
      do {
        Marked();
      } while (at_ != end_ && IsMarked(*at_));
    }
    if (at_ < block + kMarkBlock) CopyUpTo(block + kMarkBlock);
  }

  static bool IsMarked(uint8_t byte) { return byte == '=' || byte == '\r' || byte == '\n'; }

  // Copies half a block or a whole one, which is faster than as much as is needed.
  void CopyUpTo(const uint8_t* place) {
    constexpr size_t kHalf = kMarkBlock / 2;
    const auto size = static_cast<size_t>(place - at_);
    std::memcpy(out_, at_, kHalf);
    if (size > kHalf) std::memcpy(out_ + kHalf, at_ + kHalf, kHalf);
    out_ += size;
    at_ = place;
  }

  void Marked() {
    if (*at_ == '=') {
      Equals();
    } else {
      LineEnd();
    }
  }

  void Equals() {
    if (DecodeEscape(at_, end_, *out_)) {
      ++out_;
      at_ += 3;
    } else if (const size_t length = SoftBreakLength(); length != 0) {
      at_ += length;
    } else {
      *out_++ = *at_++;
    }
  }

  // How long the soft line break here is; 0 when there is none.
  size_t SoftBreakLength() const {
    const uint8_t* after = at_ + 1;
    while (after != end_ && IsBlank(*after)) ++after;
    const size_t lineEnd = LineEndLength(after);
    return lineEnd == 0 ? 0 : static_cast<size_t>(after - at_) + lineEnd;
  }

  // The blanks before it have been copied already.
  void LineEnd() {
    for (const uint8_t* before = at_; before != begin_ && IsBlank(before[-1]); --before) --out_;
    at_ += LineEndLength(at_);
    *out_++ = '\r';
    *out_++ = '\n';
  }

  static bool IsBlank(uint8_t character) { return character == ' ' || character == '\t'; }

  // The line end there: 0, 1 or 2 characters.
  size_t LineEndLength(const uint8_t* from) const {
    if (from == end_) return 0;
    if (*from == '\r') return Left(from) > 1 && from[1] == '\n' ? 2 : 1;
    return *from == '\n' ? 1 : 0;
  }

  const uint8_t* const begin_;
  const uint8_t* const end_;
  const uint8_t* at_;
  uint8_t* out_;
};

}  // namespace quillon
