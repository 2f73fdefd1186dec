// Windows-1252, with the five bytes that it leaves undefined standing for the control characters of
// the same number, as Windows itself has them.
#include <algorithm>
#include <array>

#include "core/Utf8.h"
#include "platform/Platform.h"
#include "ports/CodePage.h"

namespace quillon {
namespace {

constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

char ByteOf(char32_t character) {
  if (character < 0x80 || (character >= 0xA0 && character <= 0xFF)) {
    return static_cast<char>(static_cast<unsigned char>(character));
  }
  const auto* const found = std::find(kHighControls.begin(), kHighControls.end(), character);
  if (found == kHighControls.end()) return '?';
  return static_cast<char>(0x80 + (found - kHighControls.begin()));
}

class Windows1252 final : public CodePage {
 public:
  std::string ToText(std::string_view bytes) const override {
    if (IsAscii(bytes)) return std::string(bytes);
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 4);
    for (const char c : bytes) {
      const auto byte = static_cast<unsigned char>(c);
      AppendUtf8(text, byte >= 0x80 && byte < 0xA0 ? kHighControls[byte - 0x80U] : byte);
    }
    return text;
  }

  std::string ToBytes(std::string_view text) const override {
    if (IsAscii(text)) return std::string(text);
    std::string bytes;
    bytes.reserve(text.size());
    while (!text.empty()) bytes.push_back(ByteOf(TakeUtf8(text)));
    return bytes;
  }
};

}  // namespace

std::unique_ptr<CodePage> MakeAnsiCodePage() {
  return std::make_unique<Windows1252>();
}

}  // namespace quillon
