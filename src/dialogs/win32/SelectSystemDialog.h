// The window in which the user selects a mail system.
#pragma once

#include "dialogs/win32/DialogWindow.h"
#include "ports/MailSystemDialog.h"

namespace quillon {

class SelectSystemDialog final : public MailSystemDialog {
 public:
  explicit SelectSystemDialog(EventLoop& loop) : loop_(loop) {}

  // Throws MailSystemBusy while it is open.
  Answer Show(const std::string& caption, std::int32_t owner,
              const std::vector<MailSystemChoice>& choices,
              std::optional<std::size_t>& selected) override;

 private:
  class Window;

  EventLoop& loop_;
  DialogSize size_;
  Window* open_ = nullptr;
};

}  // namespace quillon
