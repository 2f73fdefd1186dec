// Windows-1252 is the ANSI code page.
#include <algorithm>

#include "core/Utf8.h"
#include "core/Windows1252.h"
#include "platform/Platform.h"
#include "ports/CodePage.h"

namespace quillon {
namespace {

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

char ByteOf(char32_t character) {
  if (character < 0x80 || (character >= 0xA0 && character <= 0xFF)) {
    return static_cast<char>(static_cast<unsigned char>(character));
  }
  const auto& controls = kWindows1252Controls;
  const auto* const found = std::find(controls.begin(), controls.end(), character);
  if (found == controls.end()) return '?';
  return static_cast<char>(0x80 + (found - controls.begin()));
}

class Windows1252 final : public CodePage {
 public:
  std::string ToText(std::string_view bytes) const override {
    if (IsAscii(bytes)) return std::string(bytes);
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 4);
    for (const char c : bytes) {
      AppendUtf8(text, Windows1252Character(static_cast<unsigned char>(c)));
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
