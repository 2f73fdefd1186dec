#include "Values.h"

#include <sstream>

#include "desk/win32/AnsiText.h"

namespace vim32 {

namespace {

Address AddressOf(const std::string& address) {
  Address record{};
  record.type = kSelNative;
  PutText(record.value, address);
  return record;
}

// As a recipient or an originator stands in its record.
RecipientRecord RecordOf(const std::string& name, const std::string& address) {
  RecipientRecord record{};
  record.type = kSelEntity;
  record.name.type = kSelNative;
  PutText(record.name.value, name);
  record.address = AddressOf(address);
  return record;
}

Date DateOf(const std::string& date) {
  unsigned year = 0;
  unsigned month = 0;
  unsigned day = 0;
  unsigned hour = 0;
  unsigned minute = 0;
  char mark = 0;
  std::istringstream parts(date);
  parts >> year >> mark >> month >> mark >> day >> hour >> mark >> minute;
  if (!parts) return {kSelLocal, kUnknownDate, kUnknownDate};
  return {kSelLocal, year << 16 | month << 8 | day, hour << 24 | minute << 16};
}

}  // namespace

void PutText(char* place, std::size_t size, const std::string& utf8) {
  Require(place != nullptr);
  const std::string ansi = desk::AnsiFrom(utf8);
  Require(ansi.size() < size, kBufTooSmall);
  std::memcpy(place, ansi.c_str(), ansi.size() + 1);
}

std::string TextIn(const char* place, std::size_t size) {
  Require(std::memchr(place, 0, size) != nullptr);
  return desk::Utf8From(place);
}

Places::Places(const AttrDesc& attribute, std::size_t index)
    : place_(static_cast<char*>(attribute.buffer) + index * attribute.size), size_(attribute.size) {
  Require(attribute.buffer != nullptr);
}

void Places::PutNumber(std::uint32_t number) const {
  if (size_ == sizeof(Word)) {
    Put(static_cast<Word>(number));
  } else {
    Put(number);
  }
}

int ClassOf(std::uint32_t selector) {
  switch (selector) {
    case kSelTo:
      return 1;
    case kSelCc:
      return 2;
    case kSelBcc:
      return 3;
    default:
      throw Refusal{kInvalidSelector};
  }
}

void PutHeader(const desk::Message& message, const Places& places, std::uint32_t attribute) {
  switch (attribute) {
    case kSelSubject:
      return places.PutText(message.subject);
    case kSelFromName:
      return places.PutText(message.senderName);
    case kSelDate:
      return places.Put(DateOf(message.date));
    case kSelPriority:
      return places.PutNumber(static_cast<std::uint32_t>(message.importance));
    case kSelReturnReceipt:
      return places.PutNumber(message.receipt ? 1 : 0);
    default:
      throw Refusal{kNoSuchAttribute};
  }
}

void PutParty(const std::string& name, const std::string& address, const Places& places,
              std::uint32_t attribute) {
  switch (attribute) {
    case kSelName:
      return places.PutText(name);
    case kSelAddress:
      return places.Put(AddressOf(address));
    case kSelRecipient:
      return places.Put(RecordOf(name, address));
    default:
      throw Refusal{kNoSuchAttribute};
  }
}

}  // namespace vim32
