// The operations that make a message.
#include "backends/OutgoingFiles.h"
#include "backends/activemsg/ActiveMessagingBackEnd.h"
#include "backends/activemsg/Collections.h"
#include "backends/activemsg/ConversationIndex.h"
#include "backends/activemsg/MessageContent.h"
#include "backends/activemsg/RichTextBody.h"
#include "backends/activemsg/StepFailure.h"
#include "codec/AutomationDates.h"
#include "core/AutomationValues.h"
#include "core/ErrorCode.h"

namespace quillon {

namespace {

constexpr const char* kNoAttachment =
    "Unable to create new attachment object. (MAPISendMailQLN_OLE)";
constexpr const char* kNoPostAttachment =
    "Unable to create new attachment object. (MAPIPostMessage_OLE)";

// Whom the rich text library is to store for: the profile of the session, which has no other name
// for it when somebody else has logged on.
std::string ProfileOf(const MailRequest& request, AutomationObject& session) {
  const auto& name = request.instance.loginName;
  return name.empty() ? TextOf(session.Get("Name")) : name;
}

void CallSend(AutomationObject& message, bool showDialog) {
  try {
    message.Call("Send", AutomationArguments{{"showDialog", showDialog}});
  } catch (const AutomationError& error) {
    // He has closed the mail system's own window, and needs no box that says so.
    if (showDialog && ActiveMessagingNumber(error.Number()) == active_messaging::kUserAbort) {
      throw UserAbort();
    }
    throw;
  }
}

// A post is in its folder since it was saved. That it goes to nobody else is no failure.
void CallSendOfPost(AutomationObject& message, bool showDialog) {
  try {
    CallSend(message, showDialog);
  } catch (const AutomationError& error) {
    if (ActiveMessagingNumber(error.Number()) != active_messaging::kNoRecipients) throw;
  }
}

AutomationDate DateOf(const LocalTime& time) {
  return AutomationDateOf({time.year, time.month, time.day, time.hour, time.minute, time.second});
}

void PutPostProperties(AutomationObject& message, const MailRequest& request,
                       const LocalTime& now) {
  const auto& subject = request.shared.message.subject;
  const auto& type = request.instance.messageType;
  if (!type.empty()) message.Put("Type", type);
  PutText(message, request.shared.message);
  message.Put("ConversationIndex", request.instance.conversationIndex);
  message.Put("conversationTopic", ConversationTopic(subject));
  message.Put("TimeReceived", DateOf(now));
  try {
    message.Put("Name", subject);
  } catch (const AutomationError&) {
    // Most libraries know no name of a message.
  }
}

}  // namespace

MailResult ActiveMessagingBackEnd::Send(MailRequest& request) {
  message_ = nullptr;
  return Run(request, "Error sending mail (MAPISendMailQLN_OLE)", [&] { SendMessage(request); });
}

std::optional<std::int32_t> ActiveMessagingBackEnd::NumberOfCancelledDialog() const {
  return active_messaging::kUserAbort;
}

void ActiveMessagingBackEnd::SendMessage(MailRequest& request) {
  const auto session = LogOn(request);
  const OutgoingFiles attachments(ports_.files, request);
  const auto outbox = RequireObject(session->Get("Outbox"));
  const auto messages = RequireObject(outbox->Get("Messages"));
  MessageDraft draft(*messages);
  const auto& type = request.instance.messageType;
  if (!type.empty()) draft->Put("Type", type);
  PutText(*draft, request.shared.message);
  PutOptions(*draft, request);
  AddRecipients(*draft, request);
  AddAttachments(*draft, ports_.files, attachments.List(), kNoAttachment);
  Save(request, *session, *messages, draft);
  CallSend(*draft, request.instance.nativeMailDialog != kFalse);
  message_ = draft.Release();
}

MailResult ActiveMessagingBackEnd::Post(MailRequest& request) {
  message_ = nullptr;
  folder_ = nullptr;
  if (request.instance.folder.empty()) throw ServerError(error_code::kDataMissing);
  return Run(request, "Error posting message (MAPIPostMessage_OLE)", [&] { PostMessage(request); });
}

void ActiveMessagingBackEnd::PostMessage(MailRequest& request) {
  auto& instance = request.instance;
  const auto session = LogOn(request);
  folder_ = Folders(request).Find(instance.folder);
  if (folder_ == nullptr) throw StepFailure("Bad folder name.", active_messaging::kBadFolderName);
  const OutgoingFiles attachments(ports_.files, request);
  instance.conversationIndex = MakeConversationIndex(*session, instance.conversationIndex);
  const auto messages = RequireObject(folder_->Get("Messages"));
  MessageDraft draft(*messages);
  PutPostProperties(*draft, request, ports_.clock.Now());
  AddAttachments(*draft, ports_.files, attachments.List(), kNoPostAttachment);
  Save(request, *session, *messages, draft);
  CallSendOfPost(*draft, request.instance.nativeMailDialog != kFalse);
  message_ = draft.Release();
}

void ActiveMessagingBackEnd::Save(const MailRequest& request, AutomationObject& session,
                                  AutomationObject& messages, MessageDraft& draft) {
  draft->Call("Update");
  const auto& body = request.shared.message.body;
  if (IsRichText(body)) {
    StoreRichText({ports_.richText, ports_.messageBox}, session, ProfileOf(request, session),
                  messages, draft, body);
  }
}

}  // namespace quillon
