#include "server/Dispatch.h"

#include "mail/MailSystemKeyword.h"
#include "server/Environment.h"
#include "server/ErrorTable.h"
#include "server/MailSystems.h"

namespace quillon {

namespace {

// The order in which mail systems are looked for.
constexpr std::array<MailSystemId, 7> kCandidates{
    mail_system::kVines,
    mail_system::kVim,
    mail_system::kMhs,
    mail_system::kCserve,
    mail_system::kActiveMessaging,
    mail_system::kSimpleMapi,
    mail_system::kInternet,
};

constexpr MailSystemId kAlwaysPresent = 30;

// Families whose session handle is kept while another mail system is current.
bool KeepsHandle(MailFamily family) {
  return family == MailFamily::SimpleMapi || family == MailFamily::Vim ||
         family == MailFamily::ActiveMessaging || family == MailFamily::Notes ||
         family == MailFamily::Vines;
}

}  // namespace

Dispatch::Dispatch(InstanceState& state, Environment& environment)
    : state_(state), environment_(environment) {}

void Dispatch::SaveHandle() {
  const auto family = FamilyOf(state_.mailSystem);
  if (KeepsHandle(family)) handles_[family] = state_.sessionHandle;
}

std::int32_t Dispatch::SavedHandle(MailFamily family) const {
  const auto found = handles_.find(family);
  return found != handles_.end() ? found->second : 0;
}

void Dispatch::SelectSystem(std::int32_t system) {
  if (!IsMailSystemId(system)) throw ServerError(error_code::kInvalidValue);
  SaveHandle();
  state_.mailSystem = static_cast<MailSystemId>(system);
  state_.sessionHandle = SavedHandle(FamilyOf(state_.mailSystem));
}

bool Dispatch::Query(MailSystemId system) {
  if (system == kAlwaysPresent) return true;
  const auto family = FamilyOf(system);
  if (family == MailFamily::None) return false;
  const auto known = presence_.find(family);
  if (known != presence_.end()) return known->second;
  const bool present = environment_.mailSystems.IsPresent(system);
  presence_[family] = present;
  return present;
}

void Dispatch::Detect() {
  for (const auto candidate : kCandidates) {
    if (environment_.mailSystems.Find(candidate) != nullptr && Query(candidate)) {
      SelectSystem(candidate);
      return;
    }
  }
}

void Dispatch::EnsureSystem() {
  if (state_.mailSystem == mail_system::kNone) Detect();
  if (state_.mailSystem == mail_system::kNone) throw ServerError(error_code::kNoMailSystem);
}

BackEnd& Dispatch::CurrentBackEnd() const {
  auto* const backEnd = environment_.mailSystems.Find(state_.mailSystem);
  if (backEnd == nullptr) throw ServerError(error_code::kNotSupported);
  return *backEnd;
}

MailRequest Dispatch::Request() const {
  return {state_, environment_.shared};
}

// A number that is also a code of the server has the server's text.
void Dispatch::Fail(MailSystemId system, const MailResult& result) {
  auto text = ErrorText(result.number);
  if (text.empty()) text = result.text.empty() ? kUndetermined : result.text;
  auto number = result.number;
  throw MailSystemError(ErrorBase(system, number), std::move(text));
}

}  // namespace quillon
