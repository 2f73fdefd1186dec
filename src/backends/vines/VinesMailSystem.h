// VINES, and any mail system that a provider library stands for.
#pragma once

#include "backends/vines/VinesLibrary.h"
#include "mail/MailSystem.h"

namespace quillon {

class VinesMailSystem final : public MailSystem {
 public:
  VinesMailSystem(VinesLibrary& library, BackEnd* backEnd)
      : MailSystem(MailFamily::Vines, backEnd), library_(library) {}

  // A configuration file that names no library settles it.
  bool IsPresent() override { return library_.Load() == provider::kSuccess; }
  bool KeepsHandle() const override { return true; }
  std::string Library() const override { return library_.Name(); }
  std::string ErrorText(MailSystemId, std::int32_t number) const override {
    return library_.TextOf(number);
  }

 private:
  VinesLibrary& library_;
};

}  // namespace quillon
