// The identifier by which clients know a mailbox of the store: the digits of its name.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "core/HexDigit.h"

namespace desk {

inline std::string HexOf(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string hex;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    hex += kDigits[byte >> 4U];
    hex += kDigits[byte & 15U];
  }
  return hex;
}

inline std::optional<std::string> FromHex(std::string_view hex) {
  if (hex.size() % 2 != 0) return {};
  std::string text;
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    const int high = quillon::HexDigit(hex[i]);
    const int low = quillon::HexDigit(hex[i + 1]);
    if (high < 0 || low < 0) return {};
    text += static_cast<char>(high * 16 + low);
  }
  return text;
}

}  // namespace desk
