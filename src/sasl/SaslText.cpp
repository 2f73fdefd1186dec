#include "sasl/SaslText.h"

#include <algorithm>
#include <iterator>

#include "core/Utf8.h"

namespace quillon {
namespace {

// The control characters of RFC 3454, C.2.1 and C.2.2, without those that RFC 4013 drops before.
bool IsForbidden(char32_t character) {
  static constexpr struct {
    char32_t first;
    char32_t last;
  } kRanges[] = {
      {0x0000, 0x001F}, {0x007F, 0x009F}, {0x06DD, 0x06DD}, {0x070F, 0x070F}, {0x180E, 0x180E},
      {0x2028, 0x2029}, {0x2061, 0x2063}, {0x206A, 0x206F}, {0xFFF9, 0xFFFC}, {0x1D173, 0x1D17A},
  };
  return std::any_of(std::begin(kRanges), std::end(kRanges), [&](const auto& range) {
    return character >= range.first && character <= range.last;
  });
}

}  // namespace

bool IsSaslText(std::string_view text) {
  if (!IsUtf8(text)) return false;
  while (!text.empty()) {
    if (IsForbidden(TakeUtf8(text))) return false;
  }
  return true;
}

std::string SaslName(std::string_view name) {
  std::string written;
  for (const char c : name) {
    if (c == '=') {
      written += "=3D";
    } else if (c == ',') {
      written += "=2C";
    } else {
      written += c;
    }
  }
  return written;
}

std::string Gs2Header(std::string_view binding, std::string_view authorization) {
  std::string header(binding);
  header += ',';
  if (!authorization.empty()) header.append("a=").append(SaslName(authorization));
  return header += ',';
}

}  // namespace quillon
