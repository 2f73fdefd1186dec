// The mail systems this process knows. One object for all instances.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "mail/BackEnd.h"
#include "mail/BusyGate.h"
#include "mail/MailSystem.h"

namespace quillon {

class MailSystems {
 public:
  // The system must outlive this object; it takes the place of another one of its family.
  void Add(MailSystem& system);

  // Null for a family of which nothing is known.
  MailSystem* Find(MailSystemId system) const;

  // Null when this build cannot work with the system.
  BackEnd* BackEndOf(MailSystemId system) const;

  // The text of a mail system's own number: the server's text, else the mail system's, else
  // "Undetermined", which sets the mail system to 0.
  std::string MailErrorText(MailSystemId& system, std::int32_t interfaceError) const;

  void SetErrorDisplay(bool on) const;
  // Ends what is under way, whichever system works on it: a client that asks for it may have
  // changed its mail system meanwhile, or never had that one.
  void AsynchAbort() const;
  // Shuts one after the other down for as long as `unused` holds: clients may come meanwhile, who
  // wait while it is a foreign one's turn.
  void Shutdown(const std::function<std::int32_t(MailFamily)>& savedHandle,
                const std::function<bool()>& unused, BusyGate& busy) const;

 private:
  std::map<MailFamily, MailSystem*> systems_;
};

}  // namespace quillon
