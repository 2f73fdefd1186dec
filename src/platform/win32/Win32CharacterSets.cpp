// The character sets of Windows: its code pages.
#include <windows.h>
#include <limits>

#include "platform/Platform.h"
#include "platform/win32/WideText.h"
#include "ports/CharacterSets.h"

namespace quillon {
namespace {

// These take no flag that says what to do with a wrong byte.
constexpr UINT kUtf7 = 65000;
constexpr UINT kIso2022Kr = 50225;

class WindowsCharacterSets final : public CharacterSets {
 public:
  std::optional<std::string> ToText(std::string_view bytes, int codePage) const override {
    if (bytes.empty()) return std::string();
    if (bytes.size() > std::numeric_limits<int>::max()) return std::nullopt;
    const auto page = static_cast<UINT>(codePage);
    const DWORD flags = page == kUtf7 || page == kIso2022Kr ? 0 : MB_ERR_INVALID_CHARS;
    const int size = static_cast<int>(bytes.size());
    const int length = ::MultiByteToWideChar(page, flags, bytes.data(), size, nullptr, 0);
    if (length == 0) return std::nullopt;
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    ::MultiByteToWideChar(page, flags, bytes.data(), size, wide.data(), length);
    return Utf8FromWide(wide);
  }
};

}  // namespace

std::unique_ptr<CharacterSets> MakeCharacterSets() {
  return std::make_unique<WindowsCharacterSets>();
}

}  // namespace quillon
