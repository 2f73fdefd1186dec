// Notes, an automation object. Its numbers have no texts here.
#pragma once

#include "mail/MailSystem.h"

namespace quillon {

class Workstation;

class NotesMailSystem final : public MailSystem {
 public:
  explicit NotesMailSystem(Workstation& workstation, BackEnd* backEnd = nullptr)
      : MailSystem(MailFamily::Notes, backEnd), workstation_(workstation) {}

  bool IsPresent() override;
  bool KeepsHandle() const override { return true; }
  std::string ErrorText(MailSystemId, std::int32_t) const override { return {}; }

 private:
  Workstation& workstation_;
};

}  // namespace quillon
