// Active Messaging, an automation object.
#pragma once

#include "backends/activemsg/ActiveMessagingLibrary.h"
#include "mail/MailSystem.h"

namespace quillon {

class ActiveMessagingMailSystem final : public MailSystem {
 public:
  // `fallback` serves it where the library is missing or too old. Either back end may be null.
  explicit ActiveMessagingMailSystem(ActiveMessagingLibrary& library, BackEnd* backEnd = nullptr,
                                     BackEnd* fallback = nullptr);

  BackEnd* Serving() override { return library_.Available() ? BackEndOrNull() : fallback_; }
  bool IsPresent() override { return library_.Available(); }
  bool KeepsHandle() const override { return true; }
  std::string Library() const override;
  std::string ErrorText(MailSystemId system, std::int32_t number) const override;

 private:
  ActiveMessagingLibrary& library_;
  BackEnd* fallback_;
};

}  // namespace quillon
