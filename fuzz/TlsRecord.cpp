// The framing of TLS records: what is framed is the same however it comes.
#include "net/TlsRecord.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "MemoryFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using quillon::fuzz::Require;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto all = quillon::ReadTlsFrames(bytes);
  Require(all.whole <= size);
  // What waits for more is bounded.
  Require(all.foreign || size - all.whole < quillon::kTlsMaxRecord);
  const auto half = quillon::ReadTlsFrames(bytes.substr(0, size / 2));
  const auto rest = quillon::ReadTlsFrames(bytes.substr(half.whole));
  Require(half.whole + rest.whole == all.whole && rest.foreign == all.foreign);
  quillon::TlsAlertText(all.alert);
  return 0;
}
