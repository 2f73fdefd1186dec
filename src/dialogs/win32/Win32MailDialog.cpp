#include "dialogs/win32/Win32MailDialog.h"

#include "platform/win32/Desktop.h"

namespace quillon {

bool Win32MailDialog::Available() {
  return HasDesktop();
}

bool Win32MailDialog::Raise() {
  if (open_ == nullptr) return false;
  open_->BringToFront();
  return true;
}

MailDialog::Answer Win32MailDialog::Show(const std::string& caption, std::int32_t owner,
                                         const MailForm& form, MailDialogHost& host) {
  SendDialog dialog(loop_, files_, sizes_, caption, form, host);
  struct Opened {
    SendDialog*& open;
    ~Opened() { open = nullptr; }
  } const opened{open_};
  open_ = &dialog;
  const auto result = dialog.Run(WindowOf(owner));
  if (!result) return Answer::Unavailable;
  return dialog.Sent() ? Answer::Sent : Answer::Cancelled;
}

}  // namespace quillon
