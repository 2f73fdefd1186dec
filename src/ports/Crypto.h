// Digests, keys from passwords, and random bytes. Everything is bytes, in and out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace quillon {

enum class HashAlgorithm { kMd5, kSha1, kSha256, kSha512 };

// The system has no such algorithm, as where MD5 is forbidden, or no random bytes.
class CryptoError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A function either gives what was asked for, whole, or throws CryptoError.
class Crypto {
 public:
  virtual ~Crypto() = default;

  virtual std::string Digest(HashAlgorithm hash, std::string_view bytes) const = 0;

  // RFC 2104.
  virtual std::string Hmac(HashAlgorithm hash, std::string_view key,
                           std::string_view bytes) const = 0;

  // PBKDF2 of RFC 8018 with HMAC, a key of so many bytes. It takes a microsecond or two for each
  // iteration, so whoever takes the number from a stranger limits it; it is 1 at least.
  virtual std::string Pbkdf2(HashAlgorithm hash, std::string_view password, std::string_view salt,
                             std::uint32_t iterations, std::size_t size) const = 0;

  // Fit for nonces and keys.
  virtual std::string RandomBytes(std::size_t count) const = 0;
};

// Takes equally long wherever the first difference is, so that nobody can find out a secret by
// trying.
inline bool EqualSecrets(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) return false;
  volatile unsigned difference = 0;
  for (std::size_t i = 0; i < left.size(); ++i) {
    difference = difference | (static_cast<unsigned char>(left[i]) ^
                               static_cast<unsigned>(static_cast<unsigned char>(right[i])));
  }
  return difference == 0;
}

}  // namespace quillon
