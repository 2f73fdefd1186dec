// MHS: a mail system made of files.
#pragma once

#include "backends/mhs/MhsAccount.h"
#include "mail/MailSystem.h"

namespace quillon {

class MhsMailSystem final : public MailSystem {
 public:
  explicit MhsMailSystem(MhsAccounts& accounts, BackEnd* backEnd = nullptr)
      : MailSystem(MailFamily::Mhs, backEnd), accounts_(accounts) {}

  bool IsPresent() override { return accounts_.IsHere(); }
  bool KeepsHandle() const override { return false; }
  std::string ErrorText(MailSystemId system, std::int32_t number) const override;

 private:
  MhsAccounts& accounts_;
};

}  // namespace quillon
