// The back end of VIM.
//
// A call of VIM that fails ends the operation with its whole status as the number and the text of
// the step, or the text of the status for a step that has none; before that comes the box "VIM Mail
// Error". The session stays open. Thrown as ServerError: 522 (cancelled login dialog), 530 (copying
// a message, folders), 532 and 533 (no such header), 534 (files that cannot be packed), 544 (login
// data that nobody can be asked for), 546 (no such post office), 551 (a post without subject and
// text).
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "backends/Diagnostic.h"
#include "backends/vim/VimPorts.h"
#include "backends/vim/VimSessions.h"
#include "mail/BackEnd.h"

namespace quillon {

class VimBackEnd final : public BackEnd {
 public:
  explicit VimBackEnd(const VimPorts& ports);

  MailResult Login(MailRequest& request) override;
  MailResult Logout(MailRequest& request) override;
  MailResult SetSessionHandle(MailRequest& request, std::int32_t handle) override;
  void Shutdown(std::int32_t savedHandle) override;

 private:
  MailResult Run(const MailRequest& request, const std::function<void()>& operation) const;

  VimPorts ports_;
  Diagnostic diagnostic_;
  VimSessions sessions_;
};

}  // namespace quillon
