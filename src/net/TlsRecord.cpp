#include "net/TlsRecord.h"

#include <algorithm>

namespace quillon {

namespace {

constexpr unsigned kFirstType = 20;  // change_cipher_spec
constexpr unsigned kAlert = 21;
constexpr unsigned kLastType = 23;  // application_data
constexpr unsigned kMajorVersion = 3;
constexpr std::size_t kAlertSize = 2;  // an encrypted one is longer

struct AlertName {
  int code;
  const char* name;
};

// RFC 8446, section 6, and what older versions have besides.
constexpr AlertName kAlertNames[] = {
    {0, "close notify"},
    {10, "unexpected message"},
    {20, "bad record"},
    {22, "record overflow"},
    {40, "handshake failure"},
    {41, "no certificate"},
    {42, "bad certificate"},
    {43, "unsupported certificate"},
    {44, "certificate revoked"},
    {45, "certificate expired"},
    {46, "certificate unknown"},
    {47, "illegal parameter"},
    {48, "unknown issuer of the certificate"},
    {49, "access denied"},
    {50, "decode error"},
    {51, "decrypt error"},
    {70, "no TLS version in common"},
    {71, "insufficient security"},
    {80, "internal error"},
    {86, "inappropriate fallback"},
    {90, "user canceled"},
    {109, "missing extension"},
    {110, "unsupported extension"},
    {112, "unrecognized name"},
    {113, "bad certificate status response"},
    {116, "certificate required"},
    {120, "no application protocol"},
};

constexpr unsigned ByteAt(std::string_view bytes, std::size_t place) {
  return static_cast<unsigned char>(bytes[place]);
}

// As far as it has come.
bool MayBeHeader(std::string_view bytes) {
  if (!bytes.empty() && (ByteAt(bytes, 0) < kFirstType || ByteAt(bytes, 0) > kLastType)) {
    return false;
  }
  return bytes.size() < 2 || ByteAt(bytes, 1) == kMajorVersion;
}

}  // namespace

TlsFrames ReadTlsFrames(std::string_view bytes) {
  TlsFrames frames;
  for (;;) {
    const auto rest = bytes.substr(frames.whole);
    frames.foreign = !MayBeHeader(rest);
    if (frames.foreign || rest.size() < kTlsHeaderSize) return frames;
    const std::size_t payload = ByteAt(rest, 3) << 8 | ByteAt(rest, 4);
    frames.foreign = payload > kTlsMaxPayload;
    if (frames.foreign || rest.size() < kTlsHeaderSize + payload) return frames;
    if (ByteAt(rest, 0) == kAlert && payload == kAlertSize) {
      frames.alert = static_cast<int>(ByteAt(rest, kTlsHeaderSize + 1));
    }
    frames.whole += kTlsHeaderSize + payload;
  }
}

std::string TlsAlertText(int alert) {
  const auto* const found = std::find_if(std::begin(kAlertNames), std::end(kAlertNames),
                                         [alert](const auto& row) { return row.code == alert; });
  auto number = "alert " + std::to_string(alert);
  if (found == std::end(kAlertNames)) return number;
  return found->name + (" (" + number + ")");
}

}  // namespace quillon
