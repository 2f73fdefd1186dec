// The session with the mail system, one for the process: made by a logon of ours, or handed in by a
// client, which is used as it is and never logged off by us.
#pragma once

#include <cstdint>

#include "backends/activemsg/ActiveMessagingLibrary.h"
#include "mail/BackEnd.h"
#include "mail/INIUtilities.h"
#include "ports/LoginPrompt.h"

namespace quillon {

// What the box says of it.
inline constexpr const char* kActiveMessagingLogonFailed =
    "Failed to Logon to mail system (OLE Logon)";

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
  // The object, logged on. A call that fails on the way throws StepFailure.
  AutomationObjectPtr LoggedOn(MailRequest& request);

  // Ends our own session; a client's is forgotten.
  void Logoff();
  // The same, whatever the mail system says to it.
  void End();

  // Takes a client's session; null for our own again.
  void Use(AutomationObjectPtr clients);

  // How many sessions have come to their end here; what belongs to one is good for as long as this
  // stays the same.
  std::uint64_t Ended() const noexcept { return ended_; }

  // The object that is worked with, made when there is none; throws AutomationError.
  AutomationObjectPtr Object();

 private:
  void CallLogon(const MailRequest& request);

  ActiveMessagingLibrary& library_;
  LoginPrompt& prompt_;
  clsINIUtilities& configuration_;
  AutomationObjectPtr clients_;
  bool loggedOn_ = false;  // with our own
  std::uint64_t ended_ = 0;
};

}  // namespace quillon
