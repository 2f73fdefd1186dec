#include "dialogs/win32/DialogWorld.h"

#include <algorithm>
#include <array>
#include <commctrl.h>

namespace quillon::testing {
namespace {

std::wstring TextOf(HWND window) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  text.resize(
      static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
  return text;
}

bool IsOfClass(HWND window, const wchar_t* name) {
  std::array<wchar_t, 40> found{};
  GetClassNameW(window, found.data(), static_cast<int>(found.size()));
  return lstrcmpiW(found.data(), name) == 0;
}

// The room that a control leaves to its text.
SIZE RoomOf(HWND control) {
  RECT client{};
  GetClientRect(control, &client);
  const auto kind = GetWindowLongW(control, GWL_STYLE) & BS_TYPEMASK;
  const bool isButton = IsOfClass(control, WC_BUTTONW);
  if (isButton && (kind == BS_AUTOCHECKBOX || kind == BS_AUTORADIOBUTTON)) {
    client.right -= GetSystemMetrics(SM_CXMENUCHECK) + 2;
  } else if (isButton) {
    client.right -= 2 * GetSystemMetrics(SM_CXEDGE);
    client.bottom -= 2 * GetSystemMetrics(SM_CYEDGE);
  }
  return {client.right, client.bottom};
}

bool TextFits(HWND control, const std::wstring& text) {
  const SIZE room = RoomOf(control);
  const HDC device = GetDC(control);
  auto* const font = reinterpret_cast<HGDIOBJ>(SendMessageW(control, WM_GETFONT, 0, 0));
  const HGDIOBJ previous = SelectObject(device, font);
  RECT needed{0, 0, room.cx, 0};
  UINT how = DT_CALCRECT | DT_WORDBREAK;
  if (IsOfClass(control, WC_BUTTONW)) how = DT_CALCRECT | DT_SINGLELINE;
  DrawTextW(device, text.c_str(), static_cast<int>(text.size()), &needed, how);
  SelectObject(device, previous);
  ReleaseDC(control, device);
  return needed.right <= room.cx && needed.bottom <= room.cy;
}

bool ShowsItsWholeText(HWND control) {
  if (IsOfClass(control, WC_BUTTONW)) return true;
  constexpr LONG kEllipsis = SS_ENDELLIPSIS;
  return IsOfClass(control, WC_STATICW) &&
         (GetWindowLongW(control, GWL_STYLE) & SS_ELLIPSISMASK) < kEllipsis;
}

}  // namespace

std::vector<std::string> TextsThatDoNotFit(HWND dialog) {
  std::vector<std::string> found;
  for (HWND control = GetWindow(dialog, GW_CHILD); control != nullptr;
       control = GetWindow(control, GW_HWNDNEXT)) {
    const auto text = TextOf(control);
    if (!ShowsItsWholeText(control) || text.empty() || TextFits(control, text)) continue;
    found.push_back(Utf8FromWide(text));
  }
  return found;
}

HWND FindDialog(const std::wstring& caption) {
  return FindWindowW(L"#32770", caption.c_str());
}

}  // namespace quillon::testing
