// Digests and base64, as logins need them.
#pragma once

#include <cstddef>
#include <openssl/evp.h>
#include <optional>
#include <string>
#include <string_view>

namespace mailhost {

std::string Base64(std::string_view bytes);
// Only what an encoder makes: whole groups, padding at the end and nothing else.
std::optional<std::string> FromBase64(std::string_view text);

std::string Hash(const EVP_MD* method, std::string_view data);
std::string Hmac(const EVP_MD* method, std::string_view key, std::string_view data);
std::string StretchedKey(const EVP_MD* method, std::string_view password, std::string_view salt,
                         int rounds);
// In small letters.
std::string Hex(std::string_view bytes);
std::string RandomBytes(std::size_t count);

}  // namespace mailhost
