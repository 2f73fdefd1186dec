#include "platform/win32/WideText.h"

#include "core/Utf8.h"

namespace quillon {

std::wstring WideFromUtf8(std::string_view text) {
  const std::u16string units = Utf16FromUtf8(text);
  return {units.begin(), units.end()};
}

std::string Utf8FromWide(std::wstring_view text) {
  return Utf8FromUtf16(std::u16string(text.begin(), text.end()));
}

}  // namespace quillon
