// The character sets that Windows writes: its code pages.
#include <windows.h>
#include <limits>

#include "platform/Platform.h"
#include "platform/win32/WideText.h"
#include "ports/CharacterEncoder.h"

namespace quillon {
namespace {

// It holds everything, and takes neither the flag nor the question.
constexpr UINT kGb18030 = 54936;

class WindowsEncoder final : public CharacterEncoder {
 public:
  bool Has(int codePage) const override {
    return ::IsValidCodePage(static_cast<UINT>(codePage)) != FALSE;
  }

  std::optional<std::string> ToBytes(std::string_view text, int codePage) const override {
    const auto wide = WideFromUtf8(text);
    if (wide.size() > std::numeric_limits<int>::max() / 4) return std::nullopt;
    const auto page = static_cast<UINT>(codePage);
    const DWORD flags = page == kGb18030 ? 0 : WC_NO_BEST_FIT_CHARS;
    BOOL replaced = FALSE;
    BOOL* const told = page == kGb18030 ? nullptr : &replaced;
    const int size = static_cast<int>(wide.size());
    const int length =
        ::WideCharToMultiByte(page, flags, wide.data(), size, nullptr, 0, nullptr, nullptr);
    if (length == 0) return std::nullopt;
    std::string bytes(static_cast<std::size_t>(length), '\0');
    ::WideCharToMultiByte(page, flags, wide.data(), size, bytes.data(), length, nullptr, told);
    if (replaced != FALSE) return std::nullopt;
    return bytes;
  }
};

}  // namespace

std::unique_ptr<CharacterEncoder> MakeCharacterEncoder() {
  return std::make_unique<WindowsEncoder>();
}

}  // namespace quillon
