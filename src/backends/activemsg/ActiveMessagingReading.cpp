// The operations with the messages of a folder.
#include <utility>

#include "backends/activemsg/ActiveMessagingBackEnd.h"
#include "backends/activemsg/ActiveMessagingNumber.h"
#include "backends/activemsg/Collections.h"
#include "backends/activemsg/ReceivedMessage.h"
#include "backends/activemsg/StepFailure.h"
#include "core/AutomationValues.h"
#include "core/ErrorCode.h"
#include "core/Text.h"
#include "mail/CurrentHeader.h"
#include "mail/ReceivedFiles.h"

namespace quillon {

namespace {

constexpr const char* kHeadersFailed = "Error getting mail headers (OLE GetFirst)";
constexpr const char* kNoMessage = "Error getting mail message (OLE GetMessage)";
constexpr std::string_view kInbox = "INBOX";

constexpr std::int32_t kMostUnread = 1000;

constexpr std::int32_t kUnsorted = 0;
constexpr std::int32_t kAscending = 1;
constexpr std::int32_t kDeliveryTime = 0x0E060040;  // the property by which messages are sorted

constexpr std::int32_t kFolderClass = 2;

// What the headers of the table are from: this, with the store behind it that is not the inbox's.
constexpr std::string_view kMailbox = "MAPI.Session ";

}  // namespace

AutomationObjectPtr ActiveMessagingBackEnd::FolderToRead(MailRequest& request,
                                                         std::string& storeId) {
  const auto tree = Folders(request);
  const auto& path = request.instance.folder;
  if (path.empty() || EqualsIgnoreCase(path, kInbox)) {
    storeId.clear();
    return InContext("Could not connect to InBox.", [&] { return tree.Inbox(); });
  }
  auto folder = tree.Find(path);
  if (folder == nullptr) throw StepFailure("Bad folder name.", active_messaging::kBadFolderName);
  storeId = TextOf(folder->Get("StoreID"));
  return folder;
}

AutomationObjectPtr ActiveMessagingBackEnd::MessagesToRead(MailRequest& request, bool unreadOnly,
                                                           const std::string& type,
                                                           std::string& storeId) {
  folder_ = nullptr;
  auto folder = FolderToRead(request, storeId);
  auto messages = RequireObject(folder->Get("Messages"));
  messages->Call("Sort", request.instance.dateSort != kFalse
                             ? Arguments({kAscending, kDeliveryTime})
                             : Arguments({kUnsorted}));
  if (unreadOnly || !type.empty()) {
    const auto filter = RequireObject(messages->Get("Filter"));
    if (unreadOnly) filter->Put("Unread", true);
    if (!type.empty()) filter->Put("Type", type);
  }
  folder_ = std::move(folder);
  return messages;
}

MailResult ActiveMessagingBackEnd::LoadMessageHeaders(MailRequest& request) {
  return Run(request, kHeadersFailed, [&] {
    const auto& instance = request.instance;
    auto& shared = request.shared;
    std::string storeId;
    const auto messages =
        MessagesToRead(request, instance.unreadOnly != kFalse, instance.messageType, storeId);
    shared.headers.clear();
    shared.headerOrigin = {std::string(kMailbox) + storeId};
    // What has been read before a failure stays.
    ForEachInTurn(*messages, instance.maximumHeaders, [&](const AutomationObjectPtr& message) {
      auto record = ReadHeader(*message, instance.dateFormat);
      record.number = std::to_string(shared.headers.size() + 1);
      shared.headers.push_back(std::move(record));
      return true;
    });
  });
}

MailResult ActiveMessagingBackEnd::UnreadCount(MailRequest& request, std::int32_t& count) {
  return Run(request, kHeadersFailed, [&] {
    count = 0;
    std::string storeId;
    const auto messages = MessagesToRead(request, true, {}, storeId);
    ForEachInTurn(*messages, kMostUnread, [&](const AutomationObjectPtr&) {
      ++count;
      return true;
    });
  });
}

AutomationObjectPtr ActiveMessagingBackEnd::CurrentMessage(MailRequest& request,
                                                           const std::string& context) {
  message_ = nullptr;
  const auto& header = CurrentHeader(request.shared, request.instance);
  const auto& mailbox = request.shared.headerOrigin.mailbox;
  if (!mailbox.starts_with(kMailbox)) throw ServerError(error_code::kNoHeaders);
  auto arguments = Arguments({header.uniqueId});
  const auto storeId = mailbox.substr(kMailbox.size());
  if (!storeId.empty()) arguments.emplace_back(storeId);
  const auto session = LogOn(request);
  return InContext(context, [&] {
    auto message = ObjectOf(session->Call("GetMessage", arguments));
    if (message == nullptr) throw StepFailure(context, active_messaging::kInvalidMessage);
    return message;
  });
}

MailResult ActiveMessagingBackEnd::LoadMessage(MailRequest& request) {
  return Run(request, kNoMessage, [&] {
    const auto& instance = request.instance;
    auto message = CurrentMessage(request, kNoMessage);
    auto loaded = ReadMessage(*message, instance.dateFormat);
    ReceivedFiles files(ports_.files, request);
    if (instance.suppressAttachments == kFalse) WriteAttachments(*message, ports_.files, files);
    if (instance.peekOnly == kFalse) {
      message->Put("Unread", false);
      message->Call("Update");
    }
    loaded.attachments = files.Keep();
    MakeCurrent(request.shared.message, std::move(loaded));
    message_ = std::move(message);
  });
}

MailResult ActiveMessagingBackEnd::DeleteMessage(MailRequest& request) {
  return Run(request, "Error deleting message",
             [&] { CurrentMessage(request, kNoMessage)->Call("Delete"); });
}

MailResult ActiveMessagingBackEnd::MoveCopyMessage(MailRequest& request, const std::string& folder,
                                                   bool copy) {
  return Run(request, copy ? "Error copying message" : "Error moving message",
             [&] { MoveCopy(request, folder, copy); });
}

void ActiveMessagingBackEnd::MoveCopy(MailRequest& request, const std::string& folder, bool copy) {
  const auto failed = std::string("Error ") + (copy ? "copying" : "moving");
  if (folder.empty()) {
    throw StepFailure("No destination folder specified.", active_messaging::kBadFolderName);
  }
  auto message = CurrentMessage(request, failed + " message, source message is invalid.");
  const auto notFound = failed + " message, folder could not be located or created - " + folder;
  const auto destination = InContext(notFound, [&] { return Folders(request).Find(folder); });
  if (destination == nullptr) throw StepFailure(notFound, active_messaging::kBadFolderName);
  if (NumberOf(destination->Get("Class")) != kFolderClass) {
    throw StepFailure("Bad destination folder.", active_messaging::kBadFolderName);
  }
  const auto arguments = Arguments({destination->Get("ID"), destination->Get("StoreID")});
  const auto placed = ObjectOf(message->Call(copy ? "CopyTo" : "MoveTo", arguments));
  folder_ = destination;
  message_ = placed != nullptr ? placed : copy ? std::move(message) : nullptr;
}

}  // namespace quillon
