#include "server/MailSystems.h"

#include "backends/activemsg/ActiveMessagingErrorText.h"
#include "backends/mapi/MapiErrorText.h"
#include "backends/vim/VimErrorText.h"
#include "platform/Workstation.h"
#include "server/ErrorTable.h"

namespace quillon {

namespace {

constexpr const char* kMapiLibrary = "mapi32.dll";
constexpr const char* kVimLibrary = "vim32.dll";
constexpr const char* kActiveMessagingLibrary = "olemsg32.dll";
constexpr const char* kActiveMessagingObject = "MAPI.Session";
constexpr const char* kNotesObject = "Notes.NotesSession";
constexpr double kActiveMessagingVersion =
    1.1F;  // the single-precision value, which is a little more than 1.1

// The part of a path up to its last backslash.
std::string DirectoryOf(const std::string& path) {
  const auto end = path.rfind('\\');
  return end == std::string::npos ? std::string() : path.substr(0, end);
}

}  // namespace

MailSystems::MailSystems(Workstation& workstation) : workstation_(workstation) {}

void MailSystems::Add(MailFamily family, BackEnd& backEnd) {
  backEnds_[family] = &backEnd;
}

BackEnd* MailSystems::Find(MailSystemId system) const {
  const auto found = backEnds_.find(FamilyOf(system));
  return found != backEnds_.end() ? found->second : nullptr;
}

bool MailSystems::IsPresent(MailSystemId system) const {
  switch (FamilyOf(system)) {
    case MailFamily::SimpleMapi:
      return workstation_.LibraryLoads(kMapiLibrary, {});
    case MailFamily::Vim:
      return IsVimPresent();
    case MailFamily::ActiveMessaging:
      return IsActiveMessagingPresent();
    case MailFamily::Notes:
      return workstation_.ObjectCreates(kNotesObject);
    default:
      return Find(system) != nullptr;
  }
}

bool MailSystems::IsVimPresent() const {
  if (workstation_.LibraryLoads(kVimLibrary, {})) return true;
  auto program = workstation_.ProfileValue("LotusMail", "Program");
  if (program.empty()) program = workstation_.ProfileValue("cc:Mail", "ProgramPath");
  const auto directory = DirectoryOf(program);
  return !directory.empty() && workstation_.LibraryLoads(kVimLibrary, directory);
}

bool MailSystems::IsActiveMessagingPresent() const {
  const auto version = workstation_.ObjectVersion(kActiveMessagingObject);
  return version && static_cast<double>(static_cast<float>(*version)) >= kActiveMessagingVersion;
}

std::string MailSystems::MailErrorText(MailSystemId& system, std::int32_t interfaceError) const {
  auto text = ErrorText(interfaceError);
  if (text.empty()) {
    if (const auto* backEnd = Find(system)) {
      text = backEnd->ErrorText(system, interfaceError);
    } else if (FamilyOf(system) == MailFamily::SimpleMapi) {
      text = MapiErrorText(interfaceError);
    } else if (FamilyOf(system) == MailFamily::ActiveMessaging) {
      text = ActiveMessagingErrorText(interfaceError);
    } else if (system == mail_system::kVim) {
      text = VimErrorText(interfaceError);
    }
  }
  if (!text.empty()) return text;
  system = mail_system::kNone;
  return kUndetermined;
}

std::string MailSystems::LibraryOf(MailSystemId system) {
  switch (FamilyOf(system)) {
    case MailFamily::SimpleMapi:
      return kMapiLibrary;
    case MailFamily::Vim:
      return kVimLibrary;
    case MailFamily::ActiveMessaging:
      return kActiveMessagingLibrary;
    default:
      return {};
  }
}

void MailSystems::SetErrorDisplay(bool on) const {
  for (const auto& [family, backEnd] : backEnds_) backEnd->SetErrorDisplay(on);
}

void MailSystems::Shutdown(const std::function<std::int32_t(MailFamily)>& savedHandle) const {
  for (const auto& [family, backEnd] : backEnds_) backEnd->Shutdown(savedHandle(family));
}

}  // namespace quillon
