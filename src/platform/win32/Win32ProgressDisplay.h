#pragma once

#include <windows.h>
#include <array>

#include "ports/EventLoop.h"
#include "ports/ProgressDisplay.h"

namespace quillon {

// A small window in the middle of the screen, as large as the resolution of its monitor wants it.
// It does not take the keyboard from the program the user works with; once activated, Esc, Enter
// and the blank abort like the button and the close box. The bar runs to and fro while the total is
// not known. Without a desktop nothing is shown.
//
// One thread's: the one that shows it must dispatch its messages.
class Win32ProgressDisplay final : public ProgressDisplay {
 public:
  // The loop keeps what an abort throws.
  explicit Win32ProgressDisplay(EventLoop& loop) : loop_(loop) {}
  Win32ProgressDisplay(const Win32ProgressDisplay&) = delete;
  Win32ProgressDisplay& operator=(const Win32ProgressDisplay&) = delete;
  ~Win32ProgressDisplay() override { Hide(); }

  void Show(const std::string& caption, std::int16_t parts, std::function<void()> abort) override;
  void SetLine(Line line, const std::string& text) override;
  void SetPosition(std::uint64_t done, std::uint64_t total) override;
  void Hide() override;

 private:
  class Layout;

  static LRESULT CALLBACK FrameProcedure(HWND window, UINT message, WPARAM first, LPARAM second);
  static LRESULT CALLBACK ButtonProcedure(HWND button, UINT message, WPARAM first, LPARAM second);

  void Create();
  HWND AddControl(const wchar_t* windowClass, const wchar_t* text, DWORD style);
  // Gives everything the size that fits the resolution, in dots per inch.
  void Arrange(UINT resolution);
  void Resize(SIZE inner);
  void Center();
  void RunToAndFro(bool on);
  void Abort();

  EventLoop& loop_;
  std::int16_t parts_ = 0;
  std::function<void()> abort_;  // empty once it has been called
  HFONT font_ = nullptr;
  HWND frame_ = nullptr;  // the window; each control is null when it is not wanted
  std::array<HWND, 4> lines_{};
  HWND bar_ = nullptr;
  HWND button_ = nullptr;
  WNDPROC plainButton_ = nullptr;
};

}  // namespace quillon
