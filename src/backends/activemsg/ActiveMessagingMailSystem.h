// Active Messaging, an automation object.
#pragma once

#include "mail/MailSystem.h"

namespace quillon {

class Workstation;

class ActiveMessagingMailSystem final : public MailSystem {
 public:
  explicit ActiveMessagingMailSystem(Workstation& workstation, BackEnd* backEnd = nullptr);

  bool IsPresent() override;
  bool KeepsHandle() const override { return true; }
  std::string Library() const override;
  std::string ErrorText(MailSystemId system, std::int32_t number) const override;

 private:
  Workstation& workstation_;
};

}  // namespace quillon
