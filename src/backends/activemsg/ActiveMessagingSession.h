// The session with the mail system, one for the process: made by a logon of ours, or handed in by a
// client, which is used as it is and never logged off by us.
#pragma once

#include "backends/activemsg/ActiveMessagingLibrary.h"
#include "mail/BackEnd.h"
#include "mail/INIUtilities.h"
#include "ports/LoginPrompt.h"

namespace quillon {

class ActiveMessagingSession {
 public:
  // `configuration` tells whether a logon asks for a session of its own: key "NewSession" of
  // section "MAPI".
  ActiveMessagingSession(ActiveMessagingLibrary& library, LoginPrompt& prompt,
                         clsINIUtilities& configuration)
      : library_(library), prompt_(prompt), configuration_(configuration) {}

  // Does nothing when there is a session. Throws AutomationError, and ServerError 522 and 544.
  void Logon(MailRequest& request);
  // The same for an operation that needs a session: the user may be asked.
  void LogonOnDemand(MailRequest& request);

  // Ends our own session; a client's is forgotten.
  void Logoff();
  // The same, whatever the mail system says to it.
  void End();

  // Takes a client's session; null for our own again.
  void Use(AutomationObjectPtr clients) { clients_ = std::move(clients); }

  // The object that is worked with, made when there is none; throws AutomationError.
  AutomationObjectPtr Object();

 private:
  void CallLogon(const MailRequest& request);

  ActiveMessagingLibrary& library_;
  LoginPrompt& prompt_;
  clsINIUtilities& configuration_;
  AutomationObjectPtr clients_;
  bool loggedOn_ = false;  // with our own
};

}  // namespace quillon
