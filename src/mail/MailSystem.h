// A mail system family on this workstation: whether it is there, what serves it, what its numbers
// mean, and the back end that works with it. The program entry makes one of each family.
#pragma once

#include <cstdint>
#include <string>

#include "mail/MailSystemId.h"

namespace quillon {

class BackEnd;

class MailSystem {
 public:
  // `backEnd` may be null: then the system can be looked for, but not worked with. It must outlive
  // this object.
  MailSystem(MailFamily family, BackEnd* backEnd) : family_(family), backEnd_(backEnd) {}
  virtual ~MailSystem() = default;
  MailSystem(const MailSystem&) = delete;
  MailSystem& operator=(const MailSystem&) = delete;

  MailFamily Family() const noexcept { return family_; }
  BackEnd* BackEndOrNull() const noexcept { return backEnd_; }

  // The back end that works for it now, where that is not always its own.
  virtual BackEnd* Serving() { return backEnd_; }

  // Whether it is another program's, which works on one call at a time.
  bool IsForeign() const noexcept { return family_ != MailFamily::Internet; }

  // Looks whether the workstation has it.
  virtual bool IsPresent() = 0;

  // Whether a Server keeps the session handle while another mail system is its current one.
  virtual bool KeepsHandle() const = 0;

  // The library that serves it, as a name to look up on the workstation; empty when there is none.
  virtual std::string Library() const { return {}; }

  // Which of several programs serves it, in numbers of the mail system's own; 0 when that is not
  // known.
  virtual int Kind() { return 0; }

  // What its tables say to a number of its interface; empty when they have no text.
  virtual std::string ErrorText(MailSystemId system, std::int32_t number) const = 0;

 private:
  MailFamily family_;
  BackEnd* backEnd_;
};

}  // namespace quillon
