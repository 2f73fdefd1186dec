// Crypto of Windows, by bcrypt.dll as Windows 7 has it.
#include <windows.h>
#include <bcrypt.h>

#include "platform/Platform.h"
#include "ports/Crypto.h"

namespace quillon {
namespace {

void Require(NTSTATUS status) {
  if (status != 0) throw CryptoError("The system refuses the digest that is needed.");
}

// The functions read these only.
UCHAR* Bytes(std::string_view bytes) {
  return reinterpret_cast<UCHAR*>(const_cast<char*>(bytes.data()));
}

UCHAR* Room(std::string& bytes) {
  return reinterpret_cast<UCHAR*>(bytes.data());
}

ULONG Size(std::string_view bytes) {
  return static_cast<ULONG>(bytes.size());
}

const wchar_t* Name(HashAlgorithm hash) {
  switch (hash) {
    case HashAlgorithm::kMd5:
      return BCRYPT_MD5_ALGORITHM;
    case HashAlgorithm::kSha1:
      return BCRYPT_SHA1_ALGORITHM;
    case HashAlgorithm::kSha256:
      return BCRYPT_SHA256_ALGORITHM;
    case HashAlgorithm::kSha512:
      return BCRYPT_SHA512_ALGORITHM;
  }
  throw CryptoError("The system does not know the digest that is needed.");
}

class Algorithm {
 public:
  // With BCRYPT_ALG_HANDLE_HMAC_FLAG for HMAC and PBKDF2: without it the latter gives a wrong key
  // and no error.
  Algorithm(HashAlgorithm hash, ULONG flags) {
    Require(::BCryptOpenAlgorithmProvider(&handle_, Name(hash), nullptr, flags));
  }
  ~Algorithm() { ::BCryptCloseAlgorithmProvider(handle_, 0); }
  Algorithm(const Algorithm&) = delete;
  Algorithm& operator=(const Algorithm&) = delete;

  BCRYPT_ALG_HANDLE Handle() const { return handle_; }

  std::size_t DigestSize() const {
    DWORD size = 0;
    ULONG written = 0;
    Require(::BCryptGetProperty(handle_, BCRYPT_HASH_LENGTH, reinterpret_cast<UCHAR*>(&size),
                                sizeof size, &written, 0));
    return size;
  }

 private:
  BCRYPT_ALG_HANDLE handle_ = nullptr;
};

class Hash {
 public:
  Hash(const Algorithm& algorithm, std::string_view key) : size_(algorithm.DigestSize()) {
    Require(::BCryptCreateHash(algorithm.Handle(), &handle_, nullptr, 0, Bytes(key), Size(key), 0));
  }
  ~Hash() { ::BCryptDestroyHash(handle_); }
  Hash(const Hash&) = delete;
  Hash& operator=(const Hash&) = delete;

  std::string Of(std::string_view bytes) {
    Require(::BCryptHashData(handle_, Bytes(bytes), Size(bytes), 0));
    std::string digest(size_, '\0');
    Require(::BCryptFinishHash(handle_, Room(digest), Size(digest), 0));
    return digest;
  }

 private:
  std::size_t size_;
  BCRYPT_HASH_HANDLE handle_ = nullptr;
};

class BcryptCrypto final : public Crypto {
 public:
  std::string Digest(HashAlgorithm hash, std::string_view bytes) const override {
    const Algorithm algorithm(hash, 0);
    return Hash(algorithm, {}).Of(bytes);
  }

  std::string Hmac(HashAlgorithm hash, std::string_view key,
                   std::string_view bytes) const override {
    const Algorithm algorithm(hash, BCRYPT_ALG_HANDLE_HMAC_FLAG);
    return Hash(algorithm, key).Of(bytes);
  }

  std::string Pbkdf2(HashAlgorithm hash, std::string_view password, std::string_view salt,
                     std::uint32_t iterations, std::size_t size) const override {
    const Algorithm algorithm(hash, BCRYPT_ALG_HANDLE_HMAC_FLAG);
    std::string key(size, '\0');
    Require(::BCryptDeriveKeyPBKDF2(algorithm.Handle(), Bytes(password), Size(password),
                                    Bytes(salt), Size(salt), iterations, Room(key), Size(key), 0));
    return key;
  }

  std::string RandomBytes(std::size_t count) const override {
    std::string bytes(count, '\0');
    if (::BCryptGenRandom(nullptr, Room(bytes), Size(bytes), BCRYPT_USE_SYSTEM_PREFERRED_RNG) !=
        0) {
      throw CryptoError("The system gives no random bytes.");
    }
    return bytes;
  }
};

}  // namespace

std::unique_ptr<Crypto> MakeCrypto() {
  return std::make_unique<BcryptCrypto>();
}

}  // namespace quillon
