// The characters of Windows-1252. The five bytes that it leaves undefined stand for the control
// characters of the same number, as Windows itself has them.
#pragma once

#include <array>

namespace quillon {

// Those of the bytes 0x80 to 0x9F; all others are those of ISO-8859-1.
inline constexpr std::array<char16_t, 32> kWindows1252Controls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr char16_t Windows1252Character(unsigned char byte) noexcept {
  return byte >= 0x80 && byte < 0xA0 ? kWindows1252Controls[byte - 0x80U] : byte;
}

}  // namespace quillon
