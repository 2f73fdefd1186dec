#include "Digest.h"

#include <array>
#include <openssl/hmac.h>
#include <openssl/rand.h>
#include <stdexcept>

#include "OpenSsl.h"

namespace mailhost {

namespace {

const unsigned char* Bytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* Bytes(std::string& text) {
  return reinterpret_cast<unsigned char*>(text.data());
}

void Check(bool good) {
  if (!good) throw std::runtime_error("a digest cannot be had: " + OpenSslReason());
}

}  // namespace

std::string Base64(std::string_view bytes) {
  std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0');
  text.resize(static_cast<std::size_t>(
      EVP_EncodeBlock(Bytes(text), Bytes(bytes), static_cast<int>(bytes.size()))));
  return text;
}

std::optional<std::string> FromBase64(std::string_view text) {
  std::string bytes(text.size() / 4 * 3, '\0');
  // The decoder is lenient with blanks and padding, so the way back must lead here again.
  const int size = EVP_DecodeBlock(Bytes(bytes), Bytes(text), static_cast<int>(text.size()));
  if (text.size() % 4 != 0 || size < 0) return std::nullopt;
  const std::size_t padding =
      text.ends_with("==") ? 2 : static_cast<std::size_t>(text.ends_with('='));
  bytes.resize(static_cast<std::size_t>(size) - padding);
  if (Base64(bytes) != text) return std::nullopt;
  return bytes;
}

std::string Hash(const EVP_MD* method, std::string_view data) {
  std::string digest(EVP_MAX_MD_SIZE, '\0');
  unsigned size = 0;
  Check(EVP_Digest(data.data(), data.size(), Bytes(digest), &size, method, nullptr) == 1);
  digest.resize(size);
  return digest;
}

std::string Hmac(const EVP_MD* method, std::string_view key, std::string_view data) {
  std::string digest(EVP_MAX_MD_SIZE, '\0');
  unsigned size = 0;
  Check(HMAC(method, key.data(), static_cast<int>(key.size()), Bytes(data), data.size(),
             Bytes(digest), &size) != nullptr);
  digest.resize(size);
  return digest;
}

std::string StretchedKey(const EVP_MD* method, std::string_view password, std::string_view salt,
                         int rounds) {
  std::string key(static_cast<std::size_t>(EVP_MD_get_size(method)), '\0');
  Check(PKCS5_PBKDF2_HMAC(password.data(), static_cast<int>(password.size()), Bytes(salt),
                          static_cast<int>(salt.size()), rounds, method,
                          static_cast<int>(key.size()), Bytes(key)) == 1);
  return key;
}

std::string Hex(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(2 * bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

std::string RandomBytes(std::size_t count) {
  std::string bytes(count, '\0');
  Check(RAND_bytes(Bytes(bytes), static_cast<int>(count)) == 1);
  return bytes;
}

}  // namespace mailhost
