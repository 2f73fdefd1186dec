// Routes each mail-system operation of one Server instance to the back end of its current mail
// system.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <utility>

#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "mail/BackEnd.h"
#include "mail/BusyGate.h"
#include "server/Environment.h"

namespace quillon {

// A failure that a back end has reported: folded into the public numbers, and already shown to the
// user by the back end when error display is on.
class MailSystemError : public ServerError {
 public:
  using ServerError::ServerError;
};

class Dispatch {
 public:
  Dispatch(InstanceState& state, Environment& environment);

  // Changes the mail system and puts its family's session in place of the old one's; throws
  // 529 for an identifier that is none.
  void SelectSystem(std::int32_t system);

  // Whether a mail system is present; each family is probed once in the life of the instance.
  bool Query(MailSystemId system);

  // Selects the mail system that the configuration file names ("MailSystem" in section "Server"),
  // or else the first one in the order of detection, of those that are present and that this build
  // can serve; none leaves the choice as it was.
  void Detect();

  // Detects when no mail system is chosen yet; throws 515, or the code given, when there is none.
  void EnsureSystem(std::int32_t none = error_code::kNoMailSystem);

  // Null when this build cannot work with the mail system.
  BackEnd* BackEndOrNull() const;

  // Calls an operation of the current back end as call(backEnd, request) and raises what it
  // reports; throws 530 when this build cannot work with the mail system, MailSystemBusy while a
  // foreign one works on another call.
  template <typename Call>
  void Run(Call&& call) {
    environment_.busy.Pass();
    EnsureSystem();
    const auto system = state_.mailSystem;
    const BusyGate::Hold alone = HoldForeign();
    auto& backEnd = CurrentBackEnd();
    MailRequest request = Request();
    const MailResult result = std::forward<Call>(call)(backEnd, request);
    if (!result.Succeeded()) Fail(system, result);
  }

  // The session kept for a family while another mail system is current.
  MailSessionSlot SavedSession(MailFamily family) const;

  // Keeps the current session under its family.
  void SaveSession();

 private:
  BackEnd& CurrentBackEnd() const;
  BusyGate::Hold HoldForeign() const;
  MailRequest Request() const;
  [[noreturn]] static void Fail(MailSystemId system, const MailResult& result);

  InstanceState& state_;
  Environment& environment_;
  std::map<MailFamily, bool> presence_;
  std::map<MailFamily, MailSessionSlot> sessions_;
};

}  // namespace quillon
