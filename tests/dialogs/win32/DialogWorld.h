// What the tests of dialogs share. The windows are real ones, on a desktop that nobody sees.
#pragma once

#include <windows.h>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/Platform.h"
#include "platform/win32/WideText.h"
#include "ports/Network.h"

namespace quillon::testing {

// The controls of a window whose text is wider or higher than they are, by text; empty when all can
// be read. What scrolls, or ends in an ellipsis by design, is left out.
std::vector<std::string> TextsThatDoNotFit(HWND dialog);

// The dialog of this thread that is open with this caption; null when there is none.
HWND FindDialog(const std::wstring& caption);

// Works through `steps` while a dialog waits, one in each round of the loop; none is taken before
// the dialog can be used. One that is still open a while later is taken away, and the test fails.
class DialogScript {
 public:
  DialogScript(EventLoop& loop, std::vector<std::function<void()>> steps)
      : steps_(std::move(steps)), timer_(loop, [this] { Next(); }) {
    timer_.Start(0);
  }
  bool Done() const { return next_ == steps_.size(); }

 private:
  void Next() {
    if (Done()) {
      ADD_FAILURE() << "The dialog did not go.";
      return PostQuitMessage(0);
    }
    timer_.Start(next_ + 1 < steps_.size() ? 1 : kPatience);
    steps_[next_++]();
  }

  static constexpr TickCount kPatience = 5000;  // milliseconds

  std::vector<std::function<void()>> steps_;
  std::size_t next_ = 0;
  Timer timer_;
};

inline void Press(HWND dialog, int button) {
  SendDlgItemMessageW(dialog, button, BM_CLICK, 0, 0);
}

}  // namespace quillon::testing
