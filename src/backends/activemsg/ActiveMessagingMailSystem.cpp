#include "backends/activemsg/ActiveMessagingMailSystem.h"

#include "backends/activemsg/ActiveMessagingErrorText.h"

namespace quillon {

ActiveMessagingMailSystem::ActiveMessagingMailSystem(ActiveMessagingLibrary& library,
                                                     BackEnd* backEnd, BackEnd* fallback)
    : MailSystem(MailFamily::ActiveMessaging, backEnd), library_(library), fallback_(fallback) {}

std::string ActiveMessagingMailSystem::Library() const {
  return "olemsg32.dll";
}

std::string ActiveMessagingMailSystem::ErrorText(MailSystemId, std::int32_t number) const {
  return ActiveMessagingErrorText(number);
}

}  // namespace quillon
