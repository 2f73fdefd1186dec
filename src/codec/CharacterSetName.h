// The names of character sets, as mail has them, and the numbers of Windows' code pages.
#pragma once

#include <string_view>

namespace quillon {

namespace code_page {

inline constexpr int kUnknown = 0;
inline constexpr int kShiftJis = 932;
inline constexpr int kGbk = 936;
inline constexpr int kUtf16Little = 1200;
inline constexpr int kUtf16Big = 1201;
inline constexpr int kWindows1252 = 1252;
inline constexpr int kAscii = 20127;
inline constexpr int kIso2022Jp = 50220;
inline constexpr int kIso2022Kr = 50225;
inline constexpr int kEucJp = 51932;
inline constexpr int kGb18030 = 54936;
inline constexpr int kUtf7 = 65000;
inline constexpr int kUtf8 = 65001;

}  // namespace code_page

// In any case, with or without hyphens. A set that is read as a larger one, because senders use the
// one name and mean the other, has the number of that: ISO-8859-1 that of Windows-1252, GB2312 that
// of GBK.
int CodePageOf(std::string_view name);

}  // namespace quillon
