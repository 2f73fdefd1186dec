#include "desk/win32/AnsiText.h"

#include <windows.h>
#include <string_view>

#include "core/Utf8.h"

namespace desk {
namespace {

std::string Utf8FromUnits(std::wstring_view wide) {
  return quillon::Utf8FromUtf16(std::u16string(wide.begin(), wide.end()));
}

}  // namespace

std::string Utf8From(const wchar_t* wide) {
  return wide == nullptr ? std::string() : Utf8FromUnits(wide);
}

std::string Utf8From(const char* ansi) {
  if (ansi == nullptr || *ansi == '\0') return {};
  const std::string_view text(ansi);
  std::wstring wide(text.size(), L'\0');  // never more units than bytes
  const int length = MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()),
                                         wide.data(), static_cast<int>(wide.size()));
  return Utf8FromUnits(std::wstring_view(wide).substr(0, static_cast<std::size_t>(length)));
}

std::string AnsiFrom(const std::string& utf8) {
  if (utf8.empty()) return {};
  const std::u16string units = quillon::Utf16FromUtf8(utf8);
  const std::wstring wide(units.begin(), units.end());
  const int count = static_cast<int>(wide.size());
  const int size = WideCharToMultiByte(CP_ACP, 0, wide.data(), count, nullptr, 0, nullptr, nullptr);
  std::string ansi(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_ACP, 0, wide.data(), count, ansi.data(), size, nullptr, nullptr);
  return ansi;
}

}  // namespace desk
