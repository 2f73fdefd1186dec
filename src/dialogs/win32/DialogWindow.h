// A dialog of the program, made of a resource template. It has no message loop of its own: while it
// is open, whichever loop runs gives it its messages, so that sockets, timers and the calls of
// other clients go on. Its keys reach it by a hook of the thread.
//
// It is modal to its owner alone, a window that is usually another program's. Whatever takes the
// dialog away, be it the user, the end of the owner or the end of the process, lets the owner be
// used again, and counts as cancel unless the dialog was closed before.
#pragma once

#include <windows.h>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "dialogs/DialogLayout.h"
#include "ports/EventLoop.h"

namespace quillon {

// How large the user has made a dialog, at 96 dots to the inch; nothing while he has not. Kept by
// whoever shows the dialog again.
using DialogSize = std::optional<Extent>;

class DialogWindow {
 public:
  DialogWindow(const DialogWindow&) = delete;
  DialogWindow& operator=(const DialogWindow&) = delete;
  virtual ~DialogWindow() { Destroy(); }

  // Shows it and returns when it is gone: what Close was given, or IDCANCEL. Nothing when no window
  // can be shown. What is no window, or does not answer, is no owner.
  std::optional<int> Run(HWND owner);

  bool IsOpen() const noexcept { return window_ != nullptr; }
  HWND Window() const noexcept { return window_; }

  // Together with what is open above it.
  void BringToFront() const;

 protected:
  // `anchors` and `size` must outlive it.
  DialogWindow(EventLoop& loop, int resource, std::span<const ControlAnchor> anchors,
               DialogSize& size);

  // Takes the window away. Nothing of it may be touched afterwards.
  void Close(int result);

  // The controls are there, and nobody sees them yet.
  virtual void OnOpen() {}
  // The control that has the keyboard first.
  virtual int FirstControl() const = 0;
  // A button was pressed, or a control tells something of itself. Buttons are told out of the loop,
  // so that what they do may take its time.
  virtual void OnCommand(int control, int notification) = 0;
  virtual LRESULT OnNotify(const NMHDR& /*header*/) { return 0; }
  // Files have been dropped on it; only after DragAcceptFiles.
  virtual void OnFilesDropped(const std::vector<std::string>& /*paths*/) {}
  // Before a key has its usual meaning; true when it has none any more.
  virtual bool OnKey(const MSG& /*message*/) { return false; }
  // Whether Escape and the close box have an effect.
  virtual bool MayCancel() const { return true; }
  virtual void OnResize() {}

  EventLoop& Loop() const noexcept { return loop_; }
  HWND Control(int control) const { return GetDlgItem(window_, control); }
  std::string Text(int control) const;
  void SetText(int control, const std::string& text) const;
  void Focus(int control) const;
  int Scaled(int length) const { return ScaledLength(length, dpi_, USER_DEFAULT_SCREEN_DPI); }

 private:
  struct Placed {
    HWND window;
    unsigned edges;
    Box base;
  };

  static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM first, LPARAM second);
  static LRESULT CALLBACK KeyHook(int code, WPARAM first, LPARAM second);
  static DialogWindow* Of(HWND window);

  INT_PTR Handle(UINT message, WPARAM first, LPARAM second);
  void Initialize(HWND window);
  void Prepare();
  void Place();
  void Show() const;
  void OnButton(int control);
  void OnTimer();
  void OnMinimum(MINMAXINFO& info) const;
  void OnDpiChanged(int dpi, const RECT& place);
  void ArrangeControls();
  void Cancel();
  void Destroy();
  void RememberSize() const;
  Extent ClientSize() const;

  EventLoop& loop_;
  const int resource_;
  const std::span<const ControlAnchor> anchors_;
  DialogSize& size_;
  HWND window_ = nullptr;
  HWND owner_ = nullptr;
  bool ownerDisabled_ = false;
  HHOOK hook_ = nullptr;
  HFONT font_ = nullptr;  // ours, after the resolution has changed
  LOGFONTW baseFont_{};
  std::optional<int> result_;

  // As the template has made it.
  int baseDpi_ = USER_DEFAULT_SCREEN_DPI;
  Extent baseClient_;
  Extent baseFrame_;  // of the whole window
  std::vector<Placed> controls_;
  int dpi_ = USER_DEFAULT_SCREEN_DPI;
};

// A window as clients name it.
inline HWND WindowOf(std::int32_t handle) {
  return reinterpret_cast<HWND>(static_cast<INT_PTR>(handle));
}

}  // namespace quillon
