#include "backends/activemsg/ActiveMessagingSession.h"

#include <utility>

#include "backends/LogonPrompt.h"
#include "backends/activemsg/ActiveMessagingNumber.h"
#include "backends/activemsg/StepFailure.h"

namespace quillon {

namespace {

// The post office and the mailbox there, one to a line. Without a mailbox nobody in particular logs
// on.
std::string ProfileInfo(const InstanceState& instance) {
  auto info = instance.postOffice + "\n" + instance.loginName;
  if (instance.loginName.empty()) info += "\nanon";
  return info;
}

bool IsNative(const MailRequest& request) {
  return request.instance.nativeMailDialog != kFalse;
}

bool NeedsPrompt(const MailRequest& request) {
  const auto& instance = request.instance;
  return instance.postOffice.empty() && !IsNative(request) && instance.loginDialog != kFalse &&
         (instance.loginName.empty() || instance.password.empty());
}

}  // namespace

void ActiveMessagingSession::Logon(MailRequest& request) {
  if (clients_ != nullptr || loggedOn_) return;
  if (NeedsPrompt(request)) {
    AskForLogon(prompt_,
                {.caption = "ActiveMessaging Login",
                 .name = login_label::kProfile,
                 .password = login_label::kPassword},
                request);
    if (clients_ != nullptr || loggedOn_) return;  // another Server was quicker
  }
  CallLogon(request);
  loggedOn_ = true;
  if (request.instance.forceDownload == kFalse) return;
  try {
    Object()->Call("DeliverNow");
  } catch (const AutomationError&) {
    End();
    throw;
  }
}

void ActiveMessagingSession::LogonOnDemand(MailRequest& request) {
  if (clients_ != nullptr || loggedOn_) return;
  request.instance.loginDialog = kTrue;
  Logon(request);
}

AutomationObjectPtr ActiveMessagingSession::LoggedOn(MailRequest& request) {
  return InContext(kActiveMessagingLogonFailed, [&] {
    LogonOnDemand(request);
    return Object();
  });
}

void ActiveMessagingSession::CallLogon(const MailRequest& request) {
  const auto& instance = request.instance;
  const bool named = !instance.postOffice.empty();
  const bool showDialog = IsNative(request) && instance.loginDialog != kFalse;
  AutomationArguments arguments{
      {"ProfileName", instance.loginName},
      {"profilePassword", instance.password},
      {"showDialog", showDialog},
      {"newSession", configuration_.ReadTrueFalse("MAPI", "NewSession", false)},
      {"parentWindow", request.shared.ownerWindow},
  };
  if (named) arguments.emplace_back("profileInfo", ProfileInfo(instance));
  Object()->Call("Logon", arguments);
}

void ActiveMessagingSession::Use(AutomationObjectPtr clients) {
  ++ended_;
  clients_ = std::move(clients);
}

void ActiveMessagingSession::Logoff() {
  ++ended_;
  clients_ = nullptr;
  if (!loggedOn_) return;
  try {
    Object()->Call("Logoff");
    loggedOn_ = false;
  } catch (const AutomationError& error) {
    // A session that has ended by itself cannot be ended; the next call logs on again.
    const auto number = ActiveMessagingNumber(error.Number());
    if (number == active_messaging::kEndOfSession || number == active_messaging::kNotInitialized) {
      loggedOn_ = false;
    }
    throw;
  }
}

void ActiveMessagingSession::End() {
  try {
    Logoff();
  } catch (const AutomationError&) {
    // There is nobody left to tell.
  }
  loggedOn_ = false;
}

AutomationObjectPtr ActiveMessagingSession::Object() {
  return clients_ != nullptr ? clients_ : library_.Session();
}

}  // namespace quillon
