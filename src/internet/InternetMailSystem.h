// Internet mail: built in, so it is always there.
#pragma once

#include "internet/InternetBackEnd.h"
#include "mail/MailSystem.h"

namespace quillon {

class InternetMailSystem final : public MailSystem {
 public:
  explicit InternetMailSystem(InternetBackEnd& backEnd)
      : MailSystem(MailFamily::Internet, &backEnd), internet_(backEnd) {}

  bool IsPresent() override { return true; }
  bool KeepsHandle() const override { return false; }
  std::string ErrorText(MailSystemId system, std::int32_t number) const override {
    return internet_.ErrorText(system, number);
  }

 private:
  const InternetBackEnd& internet_;
};

}  // namespace quillon
