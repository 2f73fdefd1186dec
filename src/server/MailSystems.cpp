#include "server/MailSystems.h"

#include "server/ErrorTable.h"

namespace quillon {

void MailSystems::Add(MailSystem& system) {
  systems_[system.Family()] = &system;
}

MailSystem* MailSystems::Find(MailSystemId system) const {
  const auto found = systems_.find(FamilyOf(system));
  return found != systems_.end() ? found->second : nullptr;
}

BackEnd* MailSystems::BackEndOf(MailSystemId system) const {
  const auto* const known = Find(system);
  return known != nullptr ? known->BackEndOrNull() : nullptr;
}

std::string MailSystems::MailErrorText(MailSystemId& system, std::int32_t interfaceError) const {
  auto text = ErrorText(interfaceError);
  const auto* const known = Find(system);
  if (text.empty() && known != nullptr) text = known->ErrorText(system, interfaceError);
  if (!text.empty()) return text;
  system = mail_system::kNone;
  return kUndetermined;
}

void MailSystems::SetErrorDisplay(bool on) const {
  for (const auto& [family, system] : systems_) {
    if (auto* const backEnd = system->BackEndOrNull()) backEnd->SetErrorDisplay(on);
  }
}

void MailSystems::AsynchAbort() const {
  for (const auto& [family, system] : systems_) {
    if (auto* const backEnd = system->BackEndOrNull()) backEnd->AsynchAbort();
  }
}

void MailSystems::Shutdown(const std::function<std::int32_t(MailFamily)>& savedHandle,
                           const std::function<bool()>& unused, BusyGate& busy) const {
  for (const auto& [family, system] : systems_) {
    if (!unused()) return;
    const BusyGate::Hold alone(busy, system->IsForeign());
    if (auto* const backEnd = system->BackEndOrNull()) backEnd->Shutdown(savedHandle(family));
  }
}

}  // namespace quillon
