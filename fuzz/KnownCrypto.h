// The system's cryptography without what differs from run to run, and without work that a server
// may ask for.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "codec/Base64Word.h"
#include "platform/Platform.h"

namespace quillon::fuzz {

class KnownCrypto final : public Crypto {
 public:
  std::string Digest(HashAlgorithm hash, std::string_view bytes) const override {
    return crypto_->Digest(hash, bytes);
  }
  std::string Hmac(HashAlgorithm hash, std::string_view key,
                   std::string_view bytes) const override {
    return crypto_->Hmac(hash, key, bytes);
  }
  std::string Pbkdf2(HashAlgorithm hash, std::string_view password, std::string_view salt,
                     std::uint32_t iterations, std::size_t size) const override {
    constexpr std::uint32_t kEnough = 4096;
    return crypto_->Pbkdf2(hash, password, salt, std::min(iterations, kEnough), size);
  }
  // The nonce of the login in RFC 7677, 3.
  std::string RandomBytes(std::size_t) const override {
    return BytesOfBase64Word("rOprNGfwEbeRWgbNEkqO").value();
  }

 private:
  std::unique_ptr<Crypto> crypto_ = MakeCrypto();
};

}  // namespace quillon::fuzz
