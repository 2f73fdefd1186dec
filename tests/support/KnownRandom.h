// The system's cryptography with random bytes that a test knows beforehand.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/Platform.h"

namespace quillon::testing {

class KnownRandom final : public Crypto {
 public:
  explicit KnownRandom(std::string bytes) : bytes_(std::move(bytes)) {}

  std::string Digest(HashAlgorithm hash, std::string_view bytes) const override {
    return crypto_->Digest(hash, bytes);
  }
  std::string Hmac(HashAlgorithm hash, std::string_view key,
                   std::string_view bytes) const override {
    return crypto_->Hmac(hash, key, bytes);
  }
  std::string Pbkdf2(HashAlgorithm hash, std::string_view password, std::string_view salt,
                     std::uint32_t iterations, std::size_t size) const override {
    return crypto_->Pbkdf2(hash, password, salt, iterations, size);
  }
  // However many are asked for.
  std::string RandomBytes(std::size_t) const override { return bytes_; }

 private:
  std::unique_ptr<Crypto> crypto_ = MakeCrypto();
  std::string bytes_;
};

}  // namespace quillon::testing
