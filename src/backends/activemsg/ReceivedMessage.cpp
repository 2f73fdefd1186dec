#include "backends/activemsg/ReceivedMessage.h"

#include <memory>
#include <utility>

#include "backends/RecipientParts.h"
#include "backends/activemsg/ActiveMessagingNumber.h"
#include "backends/activemsg/Collections.h"
#include "backends/activemsg/MessageContent.h"
#include "backends/activemsg/StepFailure.h"
#include "codec/AutomationDates.h"
#include "core/AutomationValues.h"

namespace quillon {

namespace {

constexpr std::int32_t kCc = 2;  // types of recipients
constexpr std::int32_t kBcc = 3;

constexpr std::int32_t kFileLink = 2;  // types of attachments
constexpr std::int32_t kEmbeddedMessage = 4;

std::string OptionalText(AutomationObject& object, std::string_view property) {
  return TextOf(OptionalProperty(object, property));
}

struct Sender {
  std::string text;
  std::string address;
};

Sender SenderOf(AutomationObject& message) {
  const auto sender = ObjectOf(OptionalProperty(message, "sender"));
  if (sender == nullptr) return {};
  auto address = OptionalText(*sender, "Address");
  return {FormatRecipient(OptionalText(*sender, "Name"), address), address};
}

std::int32_t CountOf(AutomationObject& message, std::string_view collection) {
  const auto items = ObjectOf(OptionalProperty(message, collection));
  return items != nullptr ? NumberOf(items->Get("Count")) : 0;
}

void ReadRecipients(AutomationObject& message, LoadedMessage& loaded) {
  const auto recipients = ObjectOf(OptionalProperty(message, "Recipients"));
  if (recipients == nullptr) return;
  ForEachItem(*recipients, [&](const AutomationObjectPtr& recipient) {
    const auto type = NumberOf(recipient->Get("Type"));
    auto& list = type == kCc ? loaded.cc : type == kBcc ? loaded.bcc : loaded.to;
    list.push_back(OptionalText(*recipient, "Name"));
    return true;
  });
}

}  // namespace

AutomationValue OptionalProperty(AutomationObject& message, std::string_view property) {
  try {
    return message.Get(property);
  } catch (const AutomationError& error) {
    if (error.Number() == active_messaging::kNotFound) return {};
    throw;
  }
}

HeaderRecord ReadHeader(AutomationObject& message, const std::string& dateFormat) {
  HeaderRecord record;
  record.uniqueId = TextOf(message.Get("ID"));
  record.messageId = record.uniqueId;
  record.subject = OptionalText(message, "subject");
  const bool unread = TruthOf(OptionalProperty(message, "Unread"));
  record.status = std::string(unread ? kStatusUnread : kStatusRead);
  record.dateText = ReceivedDateText(OptionalProperty(message, "TimeSent"), dateFormat);
  const auto importance = OptionalProperty(message, "Importance");
  const bool hasImportance = !std::holds_alternative<std::monostate>(importance);
  record.priority = hasImportance ? OwnImportance(NumberOf(importance)) : record.priority;
  record.receiptRequested = ToShortBool(TruthOf(OptionalProperty(message, "ReadReceipt")));
  auto sender = SenderOf(message);
  record.originator = std::move(sender.text);
  record.replyAddress = std::move(sender.address);
  auto details = std::make_shared<MessageDetails>();
  details->type = OptionalText(message, "Type");
  details->conversationTopic = OptionalText(message, "conversationTopic");
  details->conversationIndex = OptionalText(message, "ConversationIndex");
  details->deliveryReport = ToShortBool(TruthOf(OptionalProperty(message, "DeliveryReceipt")));
  details->attachments = CountOf(message, "attachments");
  details->recipients = CountOf(message, "Recipients");
  record.details = std::move(details);
  return record;
}

LoadedMessage ReadMessage(AutomationObject& message, const std::string& dateFormat) {
  LoadedMessage loaded;
  loaded.subject = OptionalText(message, "subject");
  loaded.body = OptionalText(message, "text");
  loaded.from = SenderOf(message).text;
  loaded.dateText = ReceivedDateText(OptionalProperty(message, "TimeSent"), dateFormat);
  ReadRecipients(message, loaded);
  return loaded;
}

void WriteAttachments(AutomationObject& message, FileSystem& system, ReceivedFiles& files) {
  const auto attachments = ObjectOf(OptionalProperty(message, "attachments"));
  if (attachments == nullptr) return;
  ForEachItem(*attachments, [&](const AutomationObjectPtr& attachment) {
    const auto type = NumberOf(attachment->Get("Type"));
    if (type == kFileLink || type == kEmbeddedMessage) return true;
    const auto path = files.NewFile(OptionalText(*attachment, "Name"));
    if (path.empty()) {
      throw StepFailure("Could not write attached file. (OLE WriteToFile)",
                        active_messaging::kAttachmentWriteFailure);
    }
    // The library's own directory need not be this program's.
    attachment->Call("WriteToFile", Arguments({system.FullPath(path)}));
    return true;
  });
}

}  // namespace quillon
