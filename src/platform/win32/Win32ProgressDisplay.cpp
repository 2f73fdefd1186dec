#include "platform/win32/Win32ProgressDisplay.h"

#include <algorithm>
#include <commctrl.h>
#include <string>
#include <string_view>
#include <utility>

#include "platform/win32/WideText.h"

namespace quillon {
namespace {

constexpr wchar_t kWindowClass[] = L"QuillonProgress";
constexpr wchar_t kButtonText[] = L"Cancel";
constexpr int kFullBar = 1000;
constexpr int kLineHeight = 9;  // in dialog units, as that of the bar
constexpr int kBarHeight = 11;

constexpr WORD kIcon = 1;  // of the program's resources
constexpr UINT kDpiChanged = 0x02E0;
constexpr WPARAM kStepPause = 50;  // milliseconds, of the bar that runs to and fro

HICON ProgramIcon() {
  const HICON icon = LoadIconW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(kIcon));
  return icon != nullptr ? icon : LoadIconW(nullptr, IDI_APPLICATION);
}

// That of the system's fonts, in dots per inch.
UINT SystemResolution() {
  const HDC device = GetDC(nullptr);
  const int resolution = GetDeviceCaps(device, LOGPIXELSY);
  ReleaseDC(nullptr, device);
  return static_cast<UINT>(resolution);
}

// That of the monitor the window is on; older systems have one for all.
UINT ResolutionOf(HWND window) {
  using Function = UINT(WINAPI*)(HWND);
  const auto function = reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow")));
  const UINT resolution = function != nullptr ? function(window) : 0;
  return resolution != 0 ? resolution : SystemResolution();
}

HFONT MakeMessageFont(UINT resolution) {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
  LOGFONTW& font = metrics.lfMessageFont;
  font.lfHeight =
      MulDiv(font.lfHeight, static_cast<int>(resolution), static_cast<int>(SystemResolution()));
  return CreateFontIndirectW(&font);
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

std::wstring TextOf(HWND window) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  text.resize(
      static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
  return text;
}

void PaintNow(HWND window) {
  RedrawWindow(window, nullptr, nullptr, RDW_ERASE | RDW_UPDATENOW | RDW_ALLCHILDREN);
}

}  // namespace

// Where the controls stand, one below the other, in dialog units: quarters of a letter's width and
// eighths of its height, so that all grows with the font. The width holds the longest amount and
// the longest time.
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
  for (const Line line : {Line::Status, Line::Server, Line::Amount, Line::Time}) SetLine(line, {});
  SetPosition(0, 0);
  ShowWindow(frame_, SW_SHOWNOACTIVATE);
  PaintNow(frame_);
}

void Win32ProgressDisplay::SetLine(Line line, const std::string& text) {
  const HWND control = lines_.at(static_cast<std::size_t>(line));
  if (control == nullptr) return;
  const auto wide = WideFromUtf8(text);
  if (TextOf(control) == wide) return;  // it would flicker
  SetWindowTextW(control, wide.c_str());
  PaintNow(control);  // a busy thread finds no time to paint
}

void Win32ProgressDisplay::SetPosition(std::uint64_t done, std::uint64_t total) {
  if (bar_ == nullptr) return;
  RunToAndFro(total == 0);
  if (total == 0) return;
  const double part = static_cast<double>(done) / static_cast<double>(total);
  SendMessageW(bar_, PBM_SETPOS, static_cast<WPARAM>(std::min(part, 1.0) * kFullBar), 0);
  PaintNow(bar_);
}

void Win32ProgressDisplay::RunToAndFro(bool on) {
  const LONG_PTR style = GetWindowLongPtrW(bar_, GWL_STYLE);
  if (((style & PBS_MARQUEE) != 0) == on) return;
  if (on) SendMessageW(bar_, PBM_SETPOS, 0, 0);
  const LONG_PTR others = style & ~static_cast<LONG_PTR>(PBS_MARQUEE);
  if (!on) SendMessageW(bar_, PBM_SETMARQUEE, FALSE, 0);
  SetWindowLongPtrW(bar_, GWL_STYLE, on ? others | PBS_MARQUEE : others);
  if (on) SendMessageW(bar_, PBM_SETMARQUEE, TRUE, kStepPause);
}

void Win32ProgressDisplay::Hide() {
  abort_ = nullptr;
  const HWND frame = std::exchange(frame_, nullptr);
  lines_ = {};
  bar_ = button_ = nullptr;
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
  windowClass.hIcon = ProgramIcon();
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

  const auto addLine = [this](Line line) {
    constexpr DWORD kLineStyle = SS_NOPREFIX | SS_ENDELLIPSIS;
    if ((parts_ & kText) == 0) return;
    lines_.at(static_cast<std::size_t>(line)) = AddControl(L"STATIC", L"", kLineStyle);
  };
  addLine(Line::Status);
  addLine(Line::Server);
  if ((parts_ & kBar) != 0) {
    bar_ = AddControl(PROGRESS_CLASSW, L"", PBS_SMOOTH);
    SendMessageW(bar_, PBM_SETRANGE32, 0, kFullBar);
  }
  addLine(Line::Amount);
  addLine(Line::Time);
  if (abortable) {
    button_ = AddControl(L"BUTTON", kButtonText, BS_DEFPUSHBUTTON | WS_TABSTOP);
    SetWindowLongPtrW(button_, GWLP_ID, IDCANCEL);
    plainButton_ = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(button_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&ButtonProcedure)));
  }
  Arrange(ResolutionOf(frame_));
  Center();
}

HWND Win32ProgressDisplay::AddControl(const wchar_t* windowClass, const wchar_t* text,
                                      DWORD style) {
  return CreateWindowExW(0, windowClass, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, frame_,
                         nullptr, nullptr, nullptr);
}

void Win32ProgressDisplay::Arrange(UINT resolution) {
  const HFONT before = std::exchange(font_, MakeMessageFont(resolution));
  Layout layout(LetterSize(font_));
  const auto put = [this](HWND control, const RECT& place) {
    MoveWindow(control, place.left, place.top, place.right - place.left, place.bottom - place.top,
               TRUE);
    SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font_), TRUE);
  };
  const auto putLine = [&](Line line) {
    const HWND control = lines_.at(static_cast<std::size_t>(line));
    if (control != nullptr) put(control, layout.AddRow(kLineHeight));
  };
  putLine(Line::Status);
  putLine(Line::Server);
  if (bar_ != nullptr) put(bar_, layout.AddRow(kBarHeight));
  putLine(Line::Amount);
  putLine(Line::Time);
  if (button_ != nullptr) put(button_, layout.AddButton());
  Resize(layout.Size());
  if (before != nullptr) DeleteObject(before);
}

// The frame around the inner part has a size of its own at each resolution, which only the window
// itself knows on every system.
void Win32ProgressDisplay::Resize(SIZE inner) {
  RECT outer{0, 0, inner.cx, inner.cy};
  AdjustWindowRectEx(&outer, static_cast<DWORD>(GetWindowLongPtrW(frame_, GWL_STYLE)), FALSE,
                     static_cast<DWORD>(GetWindowLongPtrW(frame_, GWL_EXSTYLE)));
  SIZE size{outer.right - outer.left, outer.bottom - outer.top};
  const auto apply = [&] {
    SetWindowPos(frame_, nullptr, 0, 0, size.cx, size.cy,
                 SWP_NOMOVE | SWP_NOACTIVATE | SWP_NOZORDER);
  };
  apply();
  RECT reached{};
  GetClientRect(frame_, &reached);
  size = {size.cx + inner.cx - reached.right, size.cy + inner.cy - reached.bottom};
  apply();
}

void Win32ProgressDisplay::Center() {
  RECT place{};
  GetWindowRect(frame_, &place);
  RECT work{};
  SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
  SetWindowPos(frame_, nullptr, (work.left + work.right - (place.right - place.left)) / 2,
               (work.top + work.bottom - (place.bottom - place.top)) / 2, 0, 0,
               SWP_NOSIZE | SWP_NOACTIVATE | SWP_NOZORDER);
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
    case kDpiChanged: {
      const RECT& place = *reinterpret_cast<const RECT*>(second);
      SetWindowPos(window, nullptr, place.left, place.top, 0, 0,
                   SWP_NOSIZE | SWP_NOACTIVATE | SWP_NOZORDER);
      self->Arrange(HIWORD(first));
      return 0;
    }
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
