#include "dialogs/win32/FileChooser.h"

#include <cderr.h>
#include <commdlg.h>
#include <cstddef>
#include <string_view>

#include "platform/win32/WideText.h"

namespace quillon {
namespace {

constexpr std::size_t kRoom = std::size_t{1} << 18U;  // characters, for some thousand names

// One path, or a directory and the names in it, each with a NUL behind it and one more at the end.
std::vector<std::string> PathsOf(const wchar_t* chosen) {
  std::vector<std::string> paths;
  const std::wstring_view first(chosen);
  const wchar_t* next = chosen + first.size() + 1;
  if (*next == L'\0') return {Utf8FromWide(first)};
  std::wstring directory(first);
  if (directory.back() != L'\\') directory += L'\\';
  while (*next != L'\0') {
    const std::wstring_view name(next);
    paths.push_back(Utf8FromWide(directory + std::wstring(name)));
    next += name.size() + 1;
  }
  return paths;
}

}  // namespace

ChosenFiles ChooseFiles(HWND owner) {
  std::wstring chosen(kRoom, L'\0');
  OPENFILENAMEW dialog{};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = owner;
  dialog.lpstrFilter = L"All files\0*.*\0";
  dialog.lpstrFile = chosen.data();
  dialog.nMaxFile = static_cast<DWORD>(kRoom - 1);
  dialog.lpstrTitle = L"Add Attachments";
  dialog.Flags = OFN_EXPLORER | OFN_ALLOWMULTISELECT | OFN_FILEMUSTEXIST | OFN_HIDEREADONLY |
                 OFN_NOCHANGEDIR | OFN_ENABLESIZING;
  if (GetOpenFileNameW(&dialog) != FALSE) return {PathsOf(chosen.data()), false};
  return {{}, CommDlgExtendedError() == FNERR_BUFFERTOOSMALL};
}

}  // namespace quillon
