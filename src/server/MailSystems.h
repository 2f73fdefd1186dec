// The mail systems this process knows: their presence tests, error texts and back ends. One object
// for all instances.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "mail/BackEnd.h"
#include "mail/MailSystem.h"

namespace quillon {

class Workstation;

class MailSystems {
 public:
  explicit MailSystems(Workstation& workstation);

  // The back end must outlive this object.
  void Add(MailFamily family, BackEnd& backEnd);

  // Null when the system's back end is not part of this build.
  BackEnd* Find(MailSystemId system) const;

  // Runs the presence test of the system's family. Systems without a test of their own are present
  // when their back end is.
  bool IsPresent(MailSystemId system) const;

  // The text of a mail system's own number: the server's text, else the mail system's, else
  // "Undetermined", which sets the mail system to 0.
  std::string MailErrorText(MailSystemId& system, std::int32_t interfaceError) const;

  // The library that serves a mail system, as a name to look up on the workstation; empty for
  // built-in ones.
  static std::string LibraryOf(MailSystemId system);

  void SetErrorDisplay(bool on) const;
  void Shutdown(const std::function<std::int32_t(MailFamily)>& savedHandle) const;

 private:
  bool IsVimPresent() const;
  bool IsActiveMessagingPresent() const;

  Workstation& workstation_;
  std::map<MailFamily, BackEnd*> backEnds_;
};

}  // namespace quillon
