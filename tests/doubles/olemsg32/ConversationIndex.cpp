#include "olemsg32/ConversationIndex.h"

#include <windows.h>
#include <cstdint>
#include <cstring>
#include <objbase.h>
#include <string_view>

#include "olemsg32/Errors.h"
#include "olemsg32/StoreId.h"

namespace desk {
namespace {

constexpr std::size_t kFirst = 22;
constexpr std::size_t kAnswer = 5;

// The bytes of a file time, the highest first.
std::string TimeNow() {
  FILETIME now = {};
  GetSystemTimeAsFileTime(&now);
  std::string bytes;
  for (const DWORD half : {now.dwHighDateTime, now.dwLowDateTime}) {
    for (unsigned shift = 32; shift > 0; shift -= 8) {
      bytes += static_cast<char>(half >> (shift - 8) & 0xFFU);
    }
  }
  return bytes;
}

std::string NewBytes() {
  GUID unique = {};
  if (FAILED(CoCreateGuid(&unique))) throw MemberError(MapiError::kCallFailed);
  char bytes[sizeof unique];
  std::memcpy(bytes, &unique, sizeof unique);
  return {bytes, sizeof bytes};
}

}  // namespace

std::string NewConversationIndex(const std::string& parent) {
  if (parent.empty()) return HexOf("\x01" + TimeNow().substr(1, 5) + NewBytes());
  const std::string bytes = FromHex(parent).value_or("");
  if (bytes.size() < kFirst || (bytes.size() - kFirst) % kAnswer != 0 || bytes[0] != '\x01') {
    throw MemberError(MapiError::kInvalidParameter);
  }
  return HexOf(bytes + TimeNow().substr(2, 4) + NewBytes().substr(0, 1));
}

}  // namespace desk
