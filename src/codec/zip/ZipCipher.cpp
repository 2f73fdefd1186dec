#include "codec/zip/ZipCipher.h"

#include <random>
#include <zlib.h>

namespace quillon {

ZipCipher::ZipCipher(std::string_view password) : crcTable_(::get_crc_table()) {
  for (const char c : password) Update(static_cast<uint8_t>(c));
}

std::array<uint8_t, ZipCipher::kHeaderSize> ZipCipher::Header(uint8_t checkByte) {
  std::random_device random;
  std::array<uint8_t, kHeaderSize> header{};
  for (uint8_t& byte : header) byte = static_cast<uint8_t>(random());
  header.back() = checkByte;
  Encrypt(header);
  return header;
}

void ZipCipher::Encrypt(std::span<uint8_t> bytes) {
  for (uint8_t& byte : bytes) {
    const uint32_t mask = (key2_ & 0xFFFF) | 2;
    const uint8_t plain = byte;
    byte = static_cast<uint8_t>(plain ^ ((mask * (mask ^ 1)) >> 8));
    Update(plain);
  }
}

void ZipCipher::Update(uint8_t plain) {
  key0_ = crcTable_[(key0_ ^ plain) & 0xFF] ^ (key0_ >> 8);
  key1_ = (key1_ + (key0_ & 0xFF)) * 134775813 + 1;
  key2_ = crcTable_[(key2_ ^ (key1_ >> 24)) & 0xFF] ^ (key2_ >> 8);
}

}  // namespace quillon
