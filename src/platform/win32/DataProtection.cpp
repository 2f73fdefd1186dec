#include "platform/win32/DataProtection.h"

#include <windows.h>
#include <wincrypt.h>

namespace quillon {
namespace {

constexpr DWORD kFormat = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;

// What the system has allocated.
class Blob {
 public:
  Blob() = default;
  ~Blob() {
    if (blob_.pbData == nullptr) return;
    SecureZeroMemory(blob_.pbData, blob_.cbData);
    LocalFree(blob_.pbData);
  }
  Blob(const Blob&) = delete;
  Blob& operator=(const Blob&) = delete;

  DATA_BLOB* Receive() { return &blob_; }
  std::string Bytes() const { return {reinterpret_cast<const char*>(blob_.pbData), blob_.cbData}; }

 private:
  DATA_BLOB blob_{};
};

// The system reads it only.
DATA_BLOB Viewed(std::string_view bytes) {
  return {static_cast<DWORD>(bytes.size()),
          reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()))};
}

std::optional<std::string> Encoded(std::string_view bytes) {
  const auto* const data = reinterpret_cast<const BYTE*>(bytes.data());
  const auto count = static_cast<DWORD>(bytes.size());
  DWORD size = 0;
  if (CryptBinaryToStringA(data, count, kFormat, nullptr, &size) == FALSE) return std::nullopt;
  std::string text(size, '\0');  // with a NUL at its end
  if (CryptBinaryToStringA(data, count, kFormat, text.data(), &size) == FALSE) return std::nullopt;
  text.resize(text.find_last_not_of(std::string_view("\r\n\0", 3)) + 1);
  return text;
}

std::optional<std::string> Decoded(std::string_view text) {
  const auto count = static_cast<DWORD>(text.size());
  DWORD size = 0;
  const auto decode = [&](BYTE* bytes) {
    return CryptStringToBinaryA(text.data(), count, CRYPT_STRING_BASE64, bytes, &size, nullptr,
                                nullptr) != FALSE;
  };
  if (count == 0 || !decode(nullptr)) return std::nullopt;
  std::string bytes(size, '\0');
  if (!decode(reinterpret_cast<BYTE*>(bytes.data()))) return std::nullopt;
  bytes.resize(size);
  return bytes;
}

}  // namespace

std::optional<std::string> DataProtection::Protect(std::string_view secret, Scope scope) {
  auto in = Viewed(secret);
  Blob out;
  const DWORD machine = scope == Scope::kMachine ? CRYPTPROTECT_LOCAL_MACHINE : 0U;
  if (CryptProtectData(&in, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN | machine,
                       out.Receive()) == FALSE) {
    return std::nullopt;
  }
  return Encoded(out.Bytes());
}

std::optional<std::string> DataProtection::Reveal(std::string_view text) {
  const auto bytes = Decoded(text);
  if (!bytes) return std::nullopt;
  auto in = Viewed(*bytes);
  Blob out;
  if (CryptUnprotectData(&in, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN,
                         out.Receive()) == FALSE) {
    return std::nullopt;
  }
  return out.Bytes();
}

}  // namespace quillon
