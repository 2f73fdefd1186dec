#pragma once

#include "dialogs/win32/SendDialog.h"

namespace quillon {

class Win32MailDialog final : public MailDialog {
 public:
  Win32MailDialog(EventLoop& loop, FileSystem& files) : loop_(loop), files_(files) {}

  bool Available() override;
  bool Raise() override;
  Answer Show(const std::string& caption, std::int32_t owner, const MailForm& form,
              MailDialogHost& host) override;

 private:
  EventLoop& loop_;
  FileSystem& files_;
  MailDialogSizes sizes_;
  SendDialog* open_ = nullptr;
};

}  // namespace quillon
