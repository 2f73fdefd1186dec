// The value of a hexadecimal digit.
#pragma once

namespace quillon {

// -1 for a character that is no hexadecimal digit.
constexpr int HexDigit(char c) noexcept {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

}  // namespace quillon
