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
  // enters goes into the records.
  void PreparePop(MailRequest& request);
  void PrepareSmtp(MailRequest& request);

  std::string SmtpHost(const MailRequest& request) const;
  void RememberServer(const std::string& host);

 private:
  bool AskForLogin(const MailRequest& request, const char* caption, LoginFields& fields);

  LoginPrompt& prompt_;
  clsINIUtilities& configuration_;
  std::string rememberedServer_;  // in the configuration file
};

}  // namespace quillon
