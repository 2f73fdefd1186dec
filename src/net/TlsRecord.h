// The framing of TLS (RFC 8446, section 5.1): enough to hand whole records on, and to see that a
// peer does not speak TLS at all before anybody waits for a length that is no length.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillon {

inline constexpr std::size_t kTlsHeaderSize = 5;
// 16 KiB of text and what TLS 1.2 may add to them.
inline constexpr std::size_t kTlsMaxPayload = 16384 + 2048;
inline constexpr std::size_t kTlsMaxRecord = kTlsHeaderSize + kTlsMaxPayload;

struct TlsFrames {
  std::size_t whole = 0;  // bytes at the front that are whole records
  bool foreign = false;   // what stands behind them is no record
  int alert = -1;         // the code of the last alert among them that was not encrypted
};

TlsFrames ReadTlsFrames(std::string_view bytes);

// What the alert means, as "handshake failure (alert 40)".
std::string TlsAlertText(int alert);

}  // namespace quillon
