#include "platform/win32/MapiLayout.h"

namespace quillon {
namespace {

std::string TextAt(const char* bytes, const CodePage& codePage) {
  return bytes != nullptr ? codePage.ToText(bytes) : std::string();
}

}  // namespace

MapiRecipient RecipientFrom(const mapi_record::Recipient<char>& record, const CodePage& codePage) {
  MapiRecipient recipient;
  recipient.recipientClass = record.recipientClass;
  recipient.name = TextAt(record.name, codePage);
  recipient.address = TextAt(record.address, codePage);
  if (record.entryId != nullptr) {
    recipient.entryId.assign(static_cast<const char*>(record.entryId), record.entryIdSize);
  }
  return recipient;
}

MapiMessage MessageFrom(const mapi_record::Message<char>& record, const CodePage& codePage) {
  MapiMessage message;
  message.subject = TextAt(record.subject, codePage);
  message.noteText = TextAt(record.noteText, codePage);
  message.messageType = TextAt(record.messageType, codePage);
  message.dateReceived = TextAt(record.dateReceived, codePage);
  message.conversationId = TextAt(record.conversationId, codePage);
  message.flags = record.flags;
  if (record.originator != nullptr) {
    message.originator = RecipientFrom(*record.originator, codePage);
  }
  for (ULONG i = 0; record.recipients != nullptr && i < record.recipientCount; ++i) {
    message.recipients.push_back(RecipientFrom(record.recipients[i], codePage));
  }
  for (ULONG i = 0; record.files != nullptr && i < record.fileCount; ++i) {
    const auto& file = record.files[i];
    message.files.push_back({file.flags, static_cast<std::int32_t>(file.position),
                             TextAt(file.path, codePage), TextAt(file.name, codePage)});
  }
  return message;
}

}  // namespace quillon
