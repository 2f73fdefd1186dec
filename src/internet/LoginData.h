// The data that a login needs: server and name, asked from the user when it is missing and he may
// be asked.
#pragma once

#include <string>

#include "internet/ServerSections.h"
#include "mail/BackEnd.h"
#include "mail/INIUtilities.h"
#include "ports/LoginPrompt.h"

namespace quillon {

class LoginData {
 public:
  // `configuration` holds the servers that were used last: keys "SMTPServer" and "POPServer" of
  // section "Internet".
  LoginData(LoginPrompt& prompt, clsINIUtilities& configuration, ServerSections& servers)
      : prompt_(prompt), configuration_(configuration), servers_(servers) {}

  // Whether it is all there: from the script, or from the section of its server.
  bool HasPop(const MailRequest& request);
  bool HasSmtp(const MailRequest& request);

  // Thrown: ServerError 522 when the user cancels, 544 when something is still missing. What he
  // enters goes into the records. The server that was used last is offered to him, and never taken
  // without him. Other calls may come while he is asked.
  void PreparePop(MailRequest& request);
  void PrepareSmtp(MailRequest& request);

  void RememberSmtp(const std::string& host);
  void RememberPop(const std::string& host);

 private:
  bool AskForLogin(const MailRequest& request, LoginQuestion question, LoginFields& fields);
  void Remember(const char* key, const std::string& host);
  std::string Remembered(const char* key) const;

  LoginPrompt& prompt_;
  clsINIUtilities& configuration_;
  ServerSections& servers_;
};

}  // namespace quillon
