// The ANSI code page of Windows.
#include <windows.h>

#include "platform/Platform.h"
#include "platform/win32/WideText.h"
#include "ports/CodePage.h"

namespace quillon {
namespace {

class AnsiCodePage final : public CodePage {
 public:
  std::string ToText(std::string_view bytes) const override {
    const int size = static_cast<int>(bytes.size());
    const int length = ::MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, wide.data(), length);
    return Utf8FromWide(wide);
  }

  std::string ToBytes(std::string_view text) const override {
    const std::wstring wide = WideFromUtf8(text);
    const int size = static_cast<int>(wide.size());
    const int length =
        ::WideCharToMultiByte(CP_ACP, flags_, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(length), '\0');
    ::WideCharToMultiByte(CP_ACP, flags_, wide.data(), size, bytes.data(), length, nullptr,
                          nullptr);
    return bytes;
  }

 private:
  // A fullwidth bracket or comma is text. Were it made the plain one that it looks like, it would
  // end an address. UTF-8 holds everything, and knows no such flag.
  const DWORD flags_ = ::GetACP() == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS;
};

}  // namespace

std::unique_ptr<CodePage> MakeAnsiCodePage() {
  return std::make_unique<AnsiCodePage>();
}

}  // namespace quillon
