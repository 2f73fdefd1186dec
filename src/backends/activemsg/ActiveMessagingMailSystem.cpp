#include "backends/activemsg/ActiveMessagingMailSystem.h"

#include "backends/activemsg/ActiveMessagingErrorText.h"
#include "ports/Workstation.h"

namespace quillon {

namespace {

constexpr const char* kObject = "MAPI.Session";
constexpr const char* kLibrary = "olemsg32.dll";
constexpr float kVersion = 1.1F;  // from this one on

}  // namespace

ActiveMessagingMailSystem::ActiveMessagingMailSystem(Workstation& workstation, BackEnd* backEnd)
    : MailSystem(MailFamily::ActiveMessaging, backEnd), workstation_(workstation) {}

bool ActiveMessagingMailSystem::IsPresent() {
  const auto version = workstation_.ObjectVersion(kObject);
  return version && static_cast<float>(*version) >= kVersion;
}

std::string ActiveMessagingMailSystem::Library() const {
  return kLibrary;
}

std::string ActiveMessagingMailSystem::ErrorText(MailSystemId, std::int32_t number) const {
  return ActiveMessagingErrorText(number);
}

}  // namespace quillon
