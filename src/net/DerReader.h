// The elements of DER (ITU-T X.690, section 10), one after another. An element inside another is
// read by a reader over its content, so nothing recurses.
#pragma once

#include <cstddef>
#include <string_view>

namespace quillon {

namespace der {
inline constexpr unsigned kBoolean = 0x01;
inline constexpr unsigned kInteger = 0x02;
inline constexpr unsigned kBitString = 0x03;
inline constexpr unsigned kOctetString = 0x04;
inline constexpr unsigned kObjectId = 0x06;
inline constexpr unsigned kUtcTime = 0x17;
inline constexpr unsigned kGeneralizedTime = 0x18;
inline constexpr unsigned kSequence = 0x30;
inline constexpr unsigned kSet = 0x31;
constexpr unsigned Context(unsigned number) {
  return 0x80 | number;
}
constexpr unsigned Constructed(unsigned number) {
  return 0xA0 | number;
}
}  // namespace der

struct DerElement {
  unsigned tag = 0;
  std::string_view content;
  std::string_view whole;  // with tag and length
};

class DerReader {
 public:
  explicit DerReader(std::string_view bytes) : rest_(bytes) {}

  bool AtEnd() const noexcept { return rest_.empty(); }
  // The tag of the next element; 0, which is no tag, at the end.
  unsigned NextTag() const noexcept {
    return rest_.empty() ? 0 : static_cast<unsigned char>(rest_.front());
  }

  // False, and nothing taken, for what is no DER: a length of several forms, an end before it, or a
  // tag of several bytes.
  bool Take(DerElement& element) {
    if (rest_.size() < 2 || (NextTag() & 0x1F) == 0x1F) return false;
    std::size_t header = 2;
    std::size_t length = Byte(1);
    if (length >= 0x80) {
      const auto count = length - 0x80;
      // Four bytes of length are enough for what fits into memory.
      if (count == 0 || count > 4 || rest_.size() < header + count || Byte(2) == 0) return false;
      length = 0;
      for (std::size_t i = 0; i < count; ++i) length = length << 8 | Byte(2 + i);
      if (length < 0x80) return false;
      header += count;
    }
    if (length > rest_.size() - header) return false;
    element = {NextTag(), rest_.substr(header, length), rest_.substr(0, header + length)};
    rest_.remove_prefix(header + length);
    return true;
  }
  bool Take(unsigned tag, DerElement& element) { return NextTag() == tag && Take(element); }

  // An element that may be missing.
  bool Skip(unsigned tag) {
    DerElement ignored;
    return NextTag() != tag || Take(ignored);
  }

 private:
  std::size_t Byte(std::size_t place) const { return static_cast<unsigned char>(rest_[place]); }

  std::string_view rest_;
};

}  // namespace quillon
