// Messages that are made and sent.
#include <windows.h>

#include "Values.h"
#include "desk/win32/AnsiText.h"

namespace vim32 {
namespace {

namespace fs = std::filesystem;
using desk::Utf8From;

// The value of a flag or of a number, which is a word or a double word, and the most it can be.
std::uint32_t NumberIn(const void* data, Word size, std::uint32_t most) {
  Require(size == sizeof(Word) || size == sizeof(std::uint32_t));
  std::uint32_t number = 0;
  std::memcpy(&number, data, size);
  Require(number <= most);
  return number;
}

void SetHeader(Draft& draft, std::uint32_t attribute, Word size, const void* data) {
  constexpr std::uint32_t kMostFlag = 1;
  constexpr std::uint32_t kMostPriority = 2;
  constexpr std::uint32_t kMostSensitivity = 3;
  Require(data != nullptr);
  switch (attribute) {
    case kSelSubject:
      draft.message.subject = Utf8From(std::string(static_cast<const char*>(data), size).c_str());
      break;
    case kSelSave:
      draft.keep = NumberIn(data, size, kMostFlag) != 0;
      break;
    case kSelDeliveryReport:
      draft.message.delivery = NumberIn(data, size, kMostFlag) != 0;
      break;
    case kSelNondeliveryReport:
      draft.message.fields.push_back(
          {"nondelivery", std::to_string(NumberIn(data, size, kMostFlag))});
      break;
    case kSelReturnReceipt:
      draft.message.receipt = NumberIn(data, size, kMostFlag) != 0;
      break;
    case kSelPriority:
      draft.message.importance = static_cast<int>(NumberIn(data, size, kMostPriority));
      break;
    case kSelSensitivity:
      draft.message.sensitivity = static_cast<int>(NumberIn(data, size, kMostSensitivity));
      break;
    default:
      throw Refusal{kNoSuchAttribute};
  }
}

// One with an address is taken as it is.
desk::Recipient RecipientOf(const Library& library, int recipientClass,
                            const RecipientRecord& record) {
  Require(record.type == kSelEntity && record.name.type == kSelNative &&
              record.address.type == kSelNative,
          kInvalidSelector);
  TextIn(record.name.book, sizeof record.name.book);
  desk::Recipient recipient{recipientClass, TextIn(record.name.value, sizeof record.name.value),
                            TextIn(record.address.value, sizeof record.address.value)};
  if (recipient.address.empty()) {
    const std::vector<desk::Entry> entries = library.store.Resolve(recipient.name);
    Require(!entries.empty(), kRecipientNotFound);
    Require(entries.size() == 1, kRecipientNotUnique);
    recipient.name = entries[0].name;
    recipient.address = entries[0].address;
  }
  return recipient;
}

void AddItem(desk::Message& message, std::uint32_t itemClass, const char* type, std::uint32_t flags,
             const std::string& name, const BuffFileDesc& content) {
  if (itemClass == kSelNotePart) {
    Require(type != nullptr && std::string_view(type) == "VIM_TEXT", kUnsupType);
    Require(flags == 0 && content.fileName == nullptr && content.offset == 0);
    Require(content.buffer != nullptr || content.size == 0);
    message.text += Utf8From(std::string(static_cast<char*>(content.buffer), content.size).c_str());
    return;
  }
  Require(itemClass == kSelAttach, kInvalidSelector);
  Require(type == nullptr, kUnsupType);
  Require(flags == kSelNative && content.fileName != nullptr && content.buffer == nullptr);
  const fs::path file = desk::PathFromUtf8(Utf8From(content.fileName));
  std::error_code error;
  Require(fs::exists(file, error), kAttachmentNotFound);
  Require(fs::is_regular_file(file, error), kOpenFailure);
  const std::string shown = name.empty() ? desk::Utf8FromPath(file.filename()) : name;
  message.attachments.push_back({shown, file, -1, 1, {}});
}

}  // namespace

extern "C" {

std::uint32_t WINAPI VIMCreateMessage(Handle session, const char* type, Handle* message) {
  return Call({"VIMCreateMessage"}, Utf8From(type), [&](Library& library) {
    Require(message != nullptr && type != nullptr);
    Require(std::string_view(type) == "VIM_MAIL", kUnsupType);
    library.Get<Session>(session);
    *message = library.Open(session, Draft());
  });
}

std::uint32_t WINAPI VIMSetMessageHeader(Handle message, std::uint32_t attribute, Word size,
                                         const void* data) {
  const bool isNumber = attribute != kSelSubject && data != nullptr && size >= sizeof(Word);
  const std::string told = isNumber ? std::to_string(*static_cast<const Word*>(data)) : "";
  return Call({"VIMSetMessageHeader", attribute}, told, [&](Library& library) {
    SetHeader(library.Get<Draft>(message), attribute, size, data);
  });
}

std::uint32_t WINAPI VIMSetMessageRecipient(Handle message, std::uint32_t recipientClass,
                                            const RecipientRecord* recipient) {
  return Call({"VIMSetMessageRecipient", recipientClass}, {}, [&](Library& library) {
    Require(recipient != nullptr);
    library.Get<Draft>(message).message.recipients.push_back(
        RecipientOf(library, ClassOf(recipientClass), *recipient));
  });
}

std::uint32_t WINAPI VIMSetMessageItem(Handle message, std::uint32_t itemClass, const char* type,
                                       std::uint32_t flags, const char* name,
                                       const BuffFileDesc* content) {
  return Call({"VIMSetMessageItem", itemClass}, Utf8From(name), [&](Library& library) {
    Require(content != nullptr);
    AddItem(library.Get<Draft>(message).message, itemClass, type, flags, Utf8From(name), *content);
  });
}

// The message is closed afterwards, however this ends.
std::uint32_t WINAPI VIMSendMessage(Handle message, void*, void*) {
  const std::uint32_t status = Call({"VIMSendMessage"}, {}, [&](Library& library) {
    const auto& draft = library.Get<Draft>(message);
    Require(!draft.message.recipients.empty(), kNoRecipients);
    library.store.Send(library.AccountOf(message), draft.message, draft.keep);
  });
  TheLibrary().Discard(message);
  return status;
}

}  // extern "C"

}  // namespace vim32
