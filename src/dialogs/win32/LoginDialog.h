// The window that asks for login data.
#pragma once

#include "dialogs/win32/DialogWindow.h"
#include "mail/BusyGate.h"
#include "ports/LoginPrompt.h"

namespace quillon {

class LoginDialog final : public LoginPrompt {
 public:
  // The gate is open while the user is asked.
  LoginDialog(EventLoop& loop, BusyGate& busy) : loop_(loop), busy_(busy) {}

  // Throws MailSystemBusy while it is open.
  Answer Ask(const LoginQuestion& question, LoginFields& fields) override;

 private:
  class Window;

  EventLoop& loop_;
  BusyGate& busy_;
  DialogSize size_;
  Window* open_ = nullptr;
};

}  // namespace quillon
