// Messages that are read. A text is several note parts when it is long, as it is in mail programs
// that keep no more in one.
#include <windows.h>
#include <fstream>

#include "Values.h"
#include "desk/win32/AnsiText.h"

namespace vim32 {
namespace {

constexpr std::size_t kLongestPart = 20000;
constexpr char kTextType[] = "VIM_TEXT";

std::vector<std::string> PartsOf(const std::string& text) {
  const std::string ansi = desk::AnsiFrom(text);
  std::vector<std::string> parts;
  for (std::size_t at = 0; at < ansi.size(); at += kLongestPart) {
    parts.push_back(ansi.substr(at, kLongestPart));
  }
  return parts;
}

std::vector<desk::Recipient> RecipientsOf(const desk::Message& message, int recipientClass) {
  std::vector<desk::Recipient> recipients = message.recipients;
  std::erase_if(recipients, [&](const desk::Recipient& recipient) {
    return recipient.recipientClass != recipientClass;
  });
  return recipients;
}

// The references of the items that a filter leaves: their class, and which of the class they are.
std::vector<Ref> ItemsOf(const OpenMessage& opened, std::uint32_t filter, const void* filterData) {
  Require(filter == kSelNoFilter || filter == kSelClass, kInvalidSelector);
  Require(filter == kSelNoFilter || filterData != nullptr);
  const std::uint32_t wanted =
      filter == kSelClass ? *static_cast<const std::uint32_t*>(filterData) : 0;
  Require(wanted == 0 || wanted == kSelNotePart || wanted == kSelAttach, kInvalidSelector);
  std::vector<Ref> items;
  for (std::uint32_t part = 0; wanted != kSelAttach && part < opened.parts.size(); ++part) {
    items.push_back({part, kSelNotePart});
  }
  const std::vector<desk::Attachment>& files = opened.message.attachments;
  for (std::uint32_t file = 0; wanted != kSelNotePart && file < files.size(); ++file) {
    if (!files[file].path.empty()) items.push_back({file, kSelAttach});
  }
  return items;
}

ItemDesc DescriptionOf(const OpenMessage& opened, Ref item) {
  ItemDesc description{};
  description.itemClass = item.second;
  description.ref = item;
  if (item.second == kSelNotePart) {
    PutText(description.type, kTextType);
    description.size = static_cast<std::uint32_t>(opened.parts[item.first].size());
  } else {
    const desk::Attachment& file = opened.message.attachments[item.first];
    PutText(description.name, file.name);
    std::error_code error;
    description.size = static_cast<std::uint32_t>(std::filesystem::file_size(file.path, error));
    Require(!error, kReadFailure);
  }
  return description;
}

// The bytes of an item, which must be asked for in the way that is its own.
std::string BytesOf(const OpenMessage& opened, Ref item, const char* type, std::uint32_t flags) {
  if (item.second == kSelNotePart && item.first < opened.parts.size()) {
    Require(type != nullptr && std::string_view(type) == kTextType, kConvNotSupported);
    Require(flags == 0 || flags == kSelNative, kInvalidSelector);
    return opened.parts[item.first];
  }
  Require(item.second == kSelAttach && item.first < opened.message.attachments.size());
  Require(type == nullptr, kConvNotSupported);
  Require(flags == kSelNative, kInvalidSelector);
  const auto bytes = desk::ReadBytes(opened.message.attachments[item.first].path);
  Require(bytes.has_value(), kReadFailure);
  return *bytes;
}

// No zero is put behind what is given.
void Give(const std::string& bytes, BuffFileDesc& place) {
  if (place.fileName != nullptr) {
    Require(place.buffer == nullptr);
    std::ofstream file(desk::PathFromUtf8(desk::Utf8From(place.fileName)), std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    Require(!file.fail(), kWriteFailure);
    return;
  }
  Require(place.buffer != nullptr && place.offset <= bytes.size());
  place.size = std::min(place.size, static_cast<std::uint32_t>(bytes.size()) - place.offset);
  std::memcpy(place.buffer, bytes.data() + place.offset, place.size);
}

}  // namespace

extern "C" {

std::uint32_t WINAPI VIMOpenMessage(Handle container, Ref reference, const char* key,
                                    Handle* message) {
  return Call({"VIMOpenMessage"}, {}, [&](Library& library) {
    Require(message != nullptr && (key == nullptr || *key == '\0'));
    desk::Message read = library.Read(container, reference);
    std::vector<std::string> parts = PartsOf(read.text);
    *message =
        library.Open(library.SessionOf(container), OpenMessage{std::move(read), std::move(parts)});
  });
}

std::uint32_t WINAPI VIMCloseMessage(Handle message) {
  return Call({"VIMCloseMessage"}, {},
              [&](Library& library) { library.Close<OpenMessage, Draft>(message); });
}

std::uint32_t WINAPI VIMGetMessageHeader(Handle message, Word count, const AttrDesc* attributes) {
  return Call({"VIMGetMessageHeader"}, {}, [&](Library& library) {
    const desk::Message& read = library.Get<OpenMessage>(message).message;
    PutAttributes(count, attributes, 0, [&](const Places& places, std::uint32_t attribute) {
      PutHeader(read, places, attribute);
    });
  });
}

std::uint32_t WINAPI VIMEnumerateMessageItems(Handle message, Ref* position, std::int32_t skip,
                                              Word* count, ItemDesc* items, std::uint32_t filter,
                                              const void* filterData, Bool* more) {
  const auto itemClass = filterData == nullptr ? 0 : *static_cast<const std::uint32_t*>(filterData);
  return Call({"VIMEnumerateMessageItems", itemClass}, {}, [&](Library& library) {
    Require(items != nullptr);
    const auto& opened = library.Get<OpenMessage>(message);
    const std::vector<Ref> found = ItemsOf(opened, filter, filterData);
    Enumerate(found.size(), position, skip, count, more,
              [&](std::size_t number, std::size_t index) {
                items[index] = DescriptionOf(opened, found[number]);
              });
  });
}

std::uint32_t WINAPI VIMGetMessageItem(Handle message, Ref item, const char* type,
                                       std::uint32_t flags, BuffFileDesc* place) {
  return Call({"VIMGetMessageItem", item.second}, {}, [&](Library& library) {
    Require(place != nullptr);
    Give(BytesOf(library.Get<OpenMessage>(message), item, type, flags), *place);
  });
}

std::uint32_t WINAPI VIMEnumerateMessageRecipients(Handle message, std::uint32_t recipientClass,
                                                   Ref* position, std::int32_t skip,
                                                   Word attributeCount, const AttrDesc* attributes,
                                                   Word* count, Bool* more) {
  return Call({"VIMEnumerateMessageRecipients", recipientClass}, {}, [&](Library& library) {
    const std::vector<desk::Recipient> recipients =
        RecipientsOf(library.Get<OpenMessage>(message).message, ClassOf(recipientClass));
    Enumerate(recipients.size(), position, skip, count, more,
              [&](std::size_t number, std::size_t index) {
                const desk::Recipient& recipient = recipients[number];
                PutAttributes(attributeCount, attributes, index,
                              [&](const Places& places, std::uint32_t attribute) {
                                PutParty(recipient.name, recipient.address, places, attribute);
                              });
              });
  });
}

}  // extern "C"

}  // namespace vim32
