// The traditional encryption of ZIP archives (APPNOTE.TXT 6.1). Every program that opens archives
// knows it; it keeps out the curious, not somebody determined.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace quillon {

class ZipCipher {
 public:
  // In front of the data of each encrypted entry.
  static constexpr size_t kHeaderSize = 12;

  // The bytes of the password as they are; the format names no character set for them.
  explicit ZipCipher(std::string_view password);

  // The header, encrypted: random bytes, and at the end the one by which a reader sees that it has
  // the right password. Comes first, and once.
  std::array<uint8_t, kHeaderSize> Header(uint8_t checkByte);

  // Encrypts what follows, in place.
  void Encrypt(std::span<uint8_t> bytes);

 private:
  void Update(uint8_t plain);

  const uint32_t* const crcTable_;
  uint32_t key0_ = 0x12345678;
  uint32_t key1_ = 0x23456789;
  uint32_t key2_ = 0x34567890;
};

}  // namespace quillon
