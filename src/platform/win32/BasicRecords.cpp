#include "platform/win32/BasicRecords.h"

namespace quillon {
namespace {

BSTR NewText(std::string_view bytes) {
  BSTR text = SysAllocStringByteLen(bytes.data(), static_cast<UINT>(bytes.size()));
  if (text == nullptr) throw std::bad_alloc();
  return text;
}

BSTR NewText(const std::string& text, const CodePage& page) {
  return NewText(page.ToBytes(text));
}

// Libraries that know the end of a text by its NUL may leave it in the count.
std::string_view BytesOf(BSTR text) noexcept {
  const std::string_view bytes(reinterpret_cast<const char*>(text), SysStringByteLen(text));
  return bytes.substr(0, bytes.find('\0'));
}

std::string TextOf(BSTR text, const CodePage& page) {
  return page.ToText(BytesOf(text));
}

void Free(BSTR& text) noexcept {
  SysFreeString(text);
  text = nullptr;
}

}  // namespace

AnsiBstr::AnsiBstr(std::string_view bytes) : text_(NewText(bytes)) {}

std::string_view AnsiBstr::Bytes() const noexcept {
  return BytesOf(text_);
}

void Lay(mapi_record::BasicRecipient& record, const MapiRecipient& recipient,
         const CodePage& page) {
  record.recipientClass = recipient.recipientClass;
  record.name = NewText(recipient.name, page);
  record.address = NewText(recipient.address, page);
  record.entryIdSize = static_cast<ULONG>(recipient.entryId.size());
  record.entryId = NewText(recipient.entryId);
}

void Lay(mapi_record::BasicFile& record, const MapiFile& file, const CodePage& page) {
  record.flags = file.flags;
  record.position = static_cast<ULONG>(file.position);
  record.path = NewText(file.path, page);
  record.name = NewText(file.name, page);
  record.type = NewText(std::string_view());
}

void Lay(mapi_record::BasicMessage& record, const MapiMessage& message, const CodePage& page) {
  record.subject = NewText(message.subject, page);
  record.noteText = NewText(message.noteText, page);
  record.messageType = NewText(message.messageType, page);
  record.dateReceived = NewText(message.dateReceived, page);
  record.conversationId = NewText(message.conversationId, page);
  record.flags = message.flags;
  record.recipientCount = static_cast<ULONG>(message.recipients.size());
  record.fileCount = static_cast<ULONG>(message.files.size());
}

MapiRecipient Taken(const mapi_record::BasicRecipient& record, const CodePage& page) {
  MapiRecipient recipient;
  recipient.recipientClass = record.recipientClass;
  recipient.name = TextOf(record.name, page);
  recipient.address = TextOf(record.address, page);
  const std::string_view id(reinterpret_cast<const char*>(record.entryId),
                            SysStringByteLen(record.entryId));
  recipient.entryId = id.substr(0, record.entryIdSize);
  return recipient;
}

MapiFile Taken(const mapi_record::BasicFile& record, const CodePage& page) {
  return {record.flags, static_cast<std::int32_t>(record.position), TextOf(record.path, page),
          TextOf(record.name, page)};
}

MapiMessage Taken(const mapi_record::BasicMessage& record, const CodePage& page) {
  MapiMessage message;
  message.subject = TextOf(record.subject, page);
  message.noteText = TextOf(record.noteText, page);
  message.messageType = TextOf(record.messageType, page);
  message.dateReceived = TextOf(record.dateReceived, page);
  message.conversationId = TextOf(record.conversationId, page);
  message.flags = record.flags;
  return message;
}

void Release(mapi_record::BasicRecipient& record) noexcept {
  for (auto* text : {&record.name, &record.address, &record.entryId}) Free(*text);
}

void Release(mapi_record::BasicFile& record) noexcept {
  for (auto* text : {&record.path, &record.name, &record.type}) Free(*text);
}

void Release(mapi_record::BasicMessage& record) noexcept {
  for (auto* text : {&record.subject, &record.noteText, &record.messageType, &record.dateReceived,
                     &record.conversationId}) {
    Free(*text);
  }
}

}  // namespace quillon
