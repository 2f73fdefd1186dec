// The data that a login needs: server and name, asked from the user when it is missing and he may
// be asked.
#pragma once

#include <string>

#include "mail/BackEnd.h"
#include "mail/INIUtilities.h"
#include "ports/LoginPrompt.h"

namespace quillon {

class LoginData {
 public:
  // `configuration` holds the SMTP server that was used last: key "SMTPServer" of section
  // "Internet".
  LoginData(LoginPrompt& prompt, clsINIUtilities& configuration)
      : prompt_(prompt), configuration_(configuration) {}

  // Thrown: ServerError 522 when the user cancels, 544 when something is still missing. What he
  // enters goes into the records. The SMTP server that was used last is offered to him, and never
  // taken without him.
  void PreparePop(MailRequest& request);
  void PrepareSmtp(MailRequest& request);

  void RememberServer(const std::string& host);

 private:
  bool AskForLogin(const MailRequest& request, const char* caption, LoginFields& fields);

  LoginPrompt& prompt_;
  clsINIUtilities& configuration_;
};

}  // namespace quillon
