// One window of a kind at a time. Who comes while it is open is told to try again, and the user
// sees what everybody waits for.
#pragma once

#include "mail/BusyGate.h"

namespace quillon {

template <typename Window>
class OpenWindow {
 public:
  // Throws MailSystemBusy.
  OpenWindow(Window*& open, Window& window) : open_(open) {
    if (open != nullptr) {
      open->BringToFront();
      throw MailSystemBusy();
    }
    open = &window;
  }
  OpenWindow(const OpenWindow&) = delete;
  OpenWindow& operator=(const OpenWindow&) = delete;
  ~OpenWindow() { open_ = nullptr; }

 private:
  Window*& open_;
};

}  // namespace quillon
