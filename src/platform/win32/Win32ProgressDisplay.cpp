#include "platform/win32/Win32ProgressDisplay.h"

#include <algorithm>
#include <commctrl.h>
#include <string_view>
#include <utility>

#include "platform/win32/WideText.h"

namespace quillon {
namespace {

constexpr wchar_t kWindowClass[] = L"QuillonProgress";
constexpr wchar_t kButtonText[] = L"Cancel";
constexpr int kFullBar = 1000;

HFONT MakeMessageFont() {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
  return CreateFontIndirectW(&metrics.lfMessageFont);
}

// How large a letter is on the average.
SIZE LetterSize(HFONT font) {
  constexpr std::wstring_view kLetters = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  const HDC device = GetDC(nullptr);
  const HGDIOBJ previous = SelectObject(device, font);
  SIZE size{};
  GetTextExtentPoint32W(device, kLetters.data(), static_cast<int>(kLetters.size()), &size);
  SelectObject(device, previous);
  ReleaseDC(nullptr, device);
  size.cx /= static_cast<LONG>(kLetters.size());
  return size;
}

void PaintNow(HWND window) {
  RedrawWindow(window, nullptr, nullptr, RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
}

}  // namespace

// Where the controls stand, one below the other, in dialog units: quarters of a letter's width and
// eighths of its height, so that all grows with the font.
class Win32ProgressDisplay::Layout {
 public:
  explicit Layout(SIZE letter) : letter_(letter) {}

  RECT AddRow(int height) { return Add(kMargin, kWidth - 2 * kMargin, height); }
  RECT AddButton() { return Add((kWidth - kButtonWidth) / 2, kButtonWidth, kButtonHeight); }

  // Of all that has been added, with a margin around it.
  SIZE Size() const { return {X(kWidth), Y(next_ - kGap + kMargin)}; }

 private:
  static constexpr int kWidth = 190;
  static constexpr int kMargin = 7;
  static constexpr int kGap = 5;
  static constexpr int kButtonWidth = 50;
  static constexpr int kButtonHeight = 14;

  int X(int units) const { return MulDiv(units, letter_.cx, 4); }
  int Y(int units) const { return MulDiv(units, letter_.cy, 8); }

  RECT Add(int left, int width, int height) {
    const int top = std::exchange(next_, next_ + height + kGap);
    return {X(left), Y(top), X(left + width), Y(top + height)};
  }

  SIZE letter_;
  int next_ = kMargin;
};

void Win32ProgressDisplay::Show(const std::string& caption, std::int16_t parts,
                                std::function<void()> abort) {
  if (parts != parts_) Hide();
  parts_ = parts;
  abort_ = std::move(abort);
  if (frame_ == nullptr) Create();
  if (frame_ == nullptr) return;
  SetWindowTextW(frame_, WideFromUtf8(caption).c_str());
  if (button_ != nullptr) EnableWindow(button_, TRUE);
  SetText({});
  SetPosition(0, 0);
  ShowWindow(frame_, SW_SHOWNOACTIVATE);
  PaintNow(frame_);
}

void Win32ProgressDisplay::SetText(const std::string& text) {
  if (text_ == nullptr) return;
  SetWindowTextW(text_, WideFromUtf8(text).c_str());
  PaintNow(text_);  // a busy thread finds no time to paint
}

void Win32ProgressDisplay::SetPosition(std::uint64_t done, std::uint64_t total) {
  if (bar_ == nullptr) return;
  const double part = total == 0 ? 0.0 : static_cast<double>(done) / static_cast<double>(total);
  SendMessageW(bar_, PBM_SETPOS, static_cast<WPARAM>(std::min(part, 1.0) * kFullBar), 0);
  PaintNow(bar_);
}

void Win32ProgressDisplay::Hide() {
  abort_ = nullptr;
  const HWND frame = std::exchange(frame_, nullptr);
  text_ = bar_ = button_ = nullptr;
  if (frame != nullptr) DestroyWindow(frame);
  if (font_ != nullptr) DeleteObject(std::exchange(font_, nullptr));
}

void Win32ProgressDisplay::Create() {
  INITCOMMONCONTROLSEX controls{sizeof controls, ICC_PROGRESS_CLASS | ICC_STANDARD_CLASSES};
  InitCommonControlsEx(&controls);
  WNDCLASSEXW windowClass{};
  windowClass.cbSize = sizeof windowClass;
  windowClass.lpfnWndProc = &FrameProcedure;
  windowClass.hInstance = GetModuleHandleW(nullptr);
  windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  windowClass.hbrBackground = GetSysColorBrush(COLOR_3DFACE);
  windowClass.lpszClassName = kWindowClass;
  RegisterClassExW(&windowClass);  // fails but the first time

  const bool abortable = (parts_ & kAbortButton) != 0;
  const DWORD style = WS_POPUP | WS_CAPTION | (abortable ? WS_SYSMENU : 0U);
  constexpr DWORD kExtendedStyle = WS_EX_DLGMODALFRAME | WS_EX_APPWINDOW;
  frame_ = CreateWindowExW(kExtendedStyle, kWindowClass, L"", style, 0, 0, 0, 0, nullptr, nullptr,
                           windowClass.hInstance, nullptr);
  if (frame_ == nullptr) return;
  SetWindowLongPtrW(frame_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));

  font_ = MakeMessageFont();
  Layout layout(LetterSize(font_));
  if ((parts_ & kText) != 0) {
    text_ = AddControl(L"STATIC", L"", SS_NOPREFIX | SS_ENDELLIPSIS, layout.AddRow(9));
  }
  if ((parts_ & kBar) != 0) {
    bar_ = AddControl(PROGRESS_CLASSW, L"", PBS_SMOOTH, layout.AddRow(11));
    SendMessageW(bar_, PBM_SETRANGE32, 0, kFullBar);
  }
  if (abortable) {
    button_ = AddControl(L"BUTTON", kButtonText, BS_DEFPUSHBUTTON | WS_TABSTOP, layout.AddButton());
    SetWindowLongPtrW(button_, GWLP_ID, IDCANCEL);
    plainButton_ = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(button_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&ButtonProcedure)));
  }

  const SIZE inner = layout.Size();
  RECT outer{0, 0, inner.cx, inner.cy};
  AdjustWindowRectEx(&outer, style, FALSE, kExtendedStyle);
  const int width = outer.right - outer.left;
  const int height = outer.bottom - outer.top;
  RECT work{};
  SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
  SetWindowPos(frame_, nullptr, (work.left + work.right - width) / 2,
               (work.top + work.bottom - height) / 2, width, height, SWP_NOACTIVATE | SWP_NOZORDER);
}

HWND Win32ProgressDisplay::AddControl(const wchar_t* windowClass, const wchar_t* text, DWORD style,
                                      const RECT& place) {
  const HWND control = CreateWindowExW(0, windowClass, text, WS_CHILD | WS_VISIBLE | style,
                                       place.left, place.top, place.right - place.left,
                                       place.bottom - place.top, frame_, nullptr, nullptr, nullptr);
  SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font_), FALSE);
  return control;
}

// May end the operation, and the window with it: nothing of the object is touched afterwards.
void Win32ProgressDisplay::Abort() {
  const auto abort = std::exchange(abort_, nullptr);
  if (!abort || button_ == nullptr) return;
  EnableWindow(button_, FALSE);
  loop_.Contain(abort);
}

LRESULT CALLBACK Win32ProgressDisplay::FrameProcedure(HWND window, UINT message, WPARAM first,
                                                      LPARAM second) {
  auto* const self =
      reinterpret_cast<Win32ProgressDisplay*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self == nullptr) return DefWindowProcW(window, message, first, second);
  switch (message) {
    case WM_SETFOCUS:
      if (self->button_ != nullptr) SetFocus(self->button_);
      return 0;
    case WM_COMMAND:
      if (LOWORD(first) == IDCANCEL) self->Abort();
      return 0;
    case WM_CLOSE:  // only the end of the operation takes the window away
      self->Abort();
      return 0;
    default:
      return DefWindowProcW(window, message, first, second);
  }
}

// The keys of a dialog: nobody calls IsDialogMessage for this window.
LRESULT CALLBACK Win32ProgressDisplay::ButtonProcedure(HWND button, UINT message, WPARAM first,
                                                       LPARAM second) {
  const HWND frame = GetParent(button);
  if (message == WM_KEYDOWN && (first == VK_ESCAPE || first == VK_RETURN)) {
    return SendMessageW(frame, WM_COMMAND, IDCANCEL, reinterpret_cast<LPARAM>(button));
  }
  const auto* const self =
      reinterpret_cast<const Win32ProgressDisplay*>(GetWindowLongPtrW(frame, GWLP_USERDATA));
  return CallWindowProcW(self->plainButton_, button, message, first, second);
}

}  // namespace quillon
