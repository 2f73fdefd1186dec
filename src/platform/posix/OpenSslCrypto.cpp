// Crypto of the native build, by OpenSSL's libcrypto.
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include "platform/Platform.h"
#include "ports/Crypto.h"

namespace quillon {
namespace {

const EVP_MD* Method(HashAlgorithm hash) {
  switch (hash) {
    case HashAlgorithm::kMd5:
      return EVP_md5();
    case HashAlgorithm::kSha1:
      return EVP_sha1();
    case HashAlgorithm::kSha256:
      return EVP_sha256();
    case HashAlgorithm::kSha512:
      return EVP_sha512();
  }
  throw CryptoError("The system does not know the digest that is needed.");
}

const unsigned char* Bytes(std::string_view bytes) {
  return reinterpret_cast<const unsigned char*>(bytes.data());
}

unsigned char* Room(std::string& bytes) {
  return reinterpret_cast<unsigned char*>(bytes.data());
}

class OpenSslCrypto final : public Crypto {
 public:
  std::string Digest(HashAlgorithm hash, std::string_view bytes) const override {
    std::string digest(EVP_MAX_MD_SIZE, '\0');
    unsigned size = 0;
    Require(EVP_Digest(bytes.data(), bytes.size(), Room(digest), &size, Method(hash), nullptr) ==
            1);
    digest.resize(size);
    return digest;
  }

  std::string Hmac(HashAlgorithm hash, std::string_view key,
                   std::string_view bytes) const override {
    std::string code(EVP_MAX_MD_SIZE, '\0');
    unsigned size = 0;
    const char* const start = key.empty() ? "" : key.data();  // null would mean: the key of before
    Require(HMAC(Method(hash), start, static_cast<int>(key.size()), Bytes(bytes), bytes.size(),
                 Room(code), &size) != nullptr);
    code.resize(size);
    return code;
  }

  std::string Pbkdf2(HashAlgorithm hash, std::string_view password, std::string_view salt,
                     std::uint32_t iterations, std::size_t size) const override {
    std::string key(size, '\0');
    Require(PKCS5_PBKDF2_HMAC(password.data(), static_cast<int>(password.size()), Bytes(salt),
                              static_cast<int>(salt.size()), static_cast<int>(iterations),
                              Method(hash), static_cast<int>(size), Room(key)) == 1);
    return key;
  }

  std::string RandomBytes(std::size_t count) const override {
    std::string bytes(count, '\0');
    if (RAND_bytes(Room(bytes), static_cast<int>(count)) != 1) {
      throw CryptoError("The system gives no random bytes.");
    }
    return bytes;
  }

 private:
  static void Require(bool done) {
    if (!done) throw CryptoError("The system refuses the digest that is needed.");
  }
};

}  // namespace

std::unique_ptr<Crypto> MakeCrypto() {
  return std::make_unique<OpenSslCrypto>();
}

}  // namespace quillon
