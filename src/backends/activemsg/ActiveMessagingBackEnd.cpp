#include "backends/activemsg/ActiveMessagingBackEnd.h"

#include <utility>

#include "backends/RecipientParts.h"
#include "backends/activemsg/ActiveMessagingErrorText.h"
#include "backends/activemsg/ActiveMessagingNumber.h"
#include "backends/activemsg/Collections.h"
#include "backends/activemsg/StepFailure.h"
#include "core/AutomationValues.h"

namespace quillon {

namespace {

constexpr const char* kBoxTitle = "ActiveMessaging Mail Error";
constexpr const char* kLogoffFailed = "Failed to logoff (OLE Logoff)";

}  // namespace

ActiveMessagingBackEnd::ActiveMessagingBackEnd(const ActiveMessagingPorts& ports)
    : ports_(ports),
      session_(ports.library, ports.loginPrompt, ports.configuration),
      diagnostic_(ports.messageBox, kBoxTitle, ActiveMessagingErrorText) {}

MailResult ActiveMessagingBackEnd::Run(const MailRequest& request, const std::string& context,
                                       const std::function<void()>& operation) {
  return RunOperation(diagnostic_, request, context, operation);
}

AutomationObjectPtr ActiveMessagingBackEnd::LogOn(MailRequest& request) {
  return session_.LoggedOn(request);
}

MailResult ActiveMessagingBackEnd::Login(MailRequest& request) {
  return Run(request, kActiveMessagingLogonFailed, [&] { session_.Logon(request); });
}

MailResult ActiveMessagingBackEnd::Logout(MailRequest& request) {
  message_ = nullptr;
  folder_ = nullptr;
  return Run(request, kLogoffFailed, [&] { session_.Logoff(); });
}

void ActiveMessagingBackEnd::Shutdown(std::int32_t) {
  message_ = nullptr;
  folder_ = nullptr;
  session_.End();
  ports_.library.Release();
}

AutomationObjectPtr ActiveMessagingBackEnd::SessionObject() {
  try {
    return session_.Object();
  } catch (const AutomationError&) {
    return nullptr;
  }
}

void ActiveMessagingBackEnd::SetSessionObject(const AutomationObjectPtr& session) {
  message_ = nullptr;
  folder_ = nullptr;
  session_.Use(session);
}

// An address book answers for the recipients of a message only, so there is one for the moment.
MailResult ActiveMessagingBackEnd::ResolveName(MailRequest& request, const std::string& name,
                                               bool withAddress, std::string& resolved) {
  bool asked = false;
  auto result = Run(request, "Error resolving name (OLE Resolve)", [&] {
    resolved.clear();
    const auto session = LogOn(request);
    const auto outbox = RequireObject(session->Get("Outbox"));
    const MessageDraft draft(*RequireObject(outbox->Get("Messages")));
    const auto recipients = RequireObject(draft->Get("Recipients"));
    const auto recipient = RequireObject(recipients->Call("Add", Arguments({name})));
    asked = true;
    recipient->Call("Resolve", Arguments({request.instance.nativeMailDialog != kFalse}));
    auto found = TextOf(recipient->Get("Name"));
    if (withAddress) found = FormatRecipient(found, TextOf(recipient->Get("Address")));
    resolved = std::move(found);
  });
  if (asked && result.number == active_messaging::kUserAbort) {
    result.text = "User selected cancel in ResolveName dialog.";
  }
  return result;
}

}  // namespace quillon
