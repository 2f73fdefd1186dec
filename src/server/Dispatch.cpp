#include "server/Dispatch.h"

#include "mail/INIUtilities.h"
#include "mail/MailSystemKeyword.h"
#include "server/ErrorTable.h"
#include "server/MailSystems.h"

namespace quillon {

namespace {

constexpr const char* kConfigurationSection = "Server";
constexpr const char* kSystemKey = "MailSystem";

}  // namespace

Dispatch::Dispatch(InstanceState& state, Environment& environment)
    : state_(state), environment_(environment) {}

void Dispatch::SaveSession() {
  const auto* const system = environment_.mailSystems.Find(state_.mailSystem);
  if (system != nullptr && system->KeepsHandle()) {
    sessions_[system->Family()] = state_.session;
  }
}

MailSessionSlot Dispatch::SavedSession(MailFamily family) const {
  const auto found = sessions_.find(family);
  return found != sessions_.end() ? found->second : MailSessionSlot();
}

void Dispatch::SelectSystem(std::int32_t system) {
  if (!IsMailSystemId(system)) throw ServerError(error_code::kInvalidValue);
  SaveSession();
  state_.mailSystem = static_cast<MailSystemId>(system);
  state_.session = SavedSession(FamilyOf(state_.mailSystem));
}

bool Dispatch::Query(MailSystemId system) {
  if (RowOf(system).isAlwaysPresent) return true;
  auto* const known = environment_.mailSystems.Find(system);
  if (known == nullptr) return false;
  const auto found = presence_.find(known->Family());
  if (found != presence_.end()) return found->second;
  environment_.busy.Pass();
  const BusyGate::Hold alone(environment_.busy, true);
  const bool present = known->IsPresent();
  presence_[known->Family()] = present;
  return present;
}

void Dispatch::Detect() {
  const auto isUsable = [this](MailSystemId candidate) {
    return environment_.mailSystems.BackEndOf(candidate) != nullptr && Query(candidate);
  };
  const auto wanted = environment_.configuration.ReadMailSystem(kConfigurationSection, kSystemKey);
  if (wanted != mail_system::kNone && isUsable(wanted)) {
    SelectSystem(wanted);
    return;
  }
  for (const auto candidate : mail_system::kDetectionOrder) {
    if (isUsable(candidate)) {
      SelectSystem(candidate);
      return;
    }
  }
}

void Dispatch::EnsureSystem(std::int32_t none) {
  if (state_.mailSystem == mail_system::kNone) Detect();
  if (state_.mailSystem == mail_system::kNone) throw ServerError(none);
}

BackEnd* Dispatch::BackEndOrNull() const {
  auto* const system = environment_.mailSystems.Find(state_.mailSystem);
  return system != nullptr ? system->Serving() : nullptr;
}

BackEnd& Dispatch::CurrentBackEnd() const {
  auto* const backEnd = BackEndOrNull();
  if (backEnd == nullptr) throw ServerError(error_code::kNotSupported);
  return *backEnd;
}

BusyGate::Hold Dispatch::HoldForeign() const {
  const auto* const system = environment_.mailSystems.Find(state_.mailSystem);
  return {environment_.busy, system != nullptr && system->IsForeign()};
}

MailRequest Dispatch::Request() const {
  return {state_, environment_.shared};
}

// A number that is also a code of the server has the server's text.
void Dispatch::Fail(MailSystemId system, const MailResult& result) {
  auto text = ErrorText(result.number);
  if (text.empty()) text = result.text.empty() ? kUndetermined : result.text;
  auto number = result.number;
  throw MailSystemError(ErrorBase(system, number), WithDetail(std::move(text), result));
}

}  // namespace quillon
