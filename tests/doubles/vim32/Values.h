// The client's memory: texts in the ANSI code page, attributes and enumerations. What does not fit
// or makes no sense is refused.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "Library.h"

namespace vim32 {

inline constexpr std::size_t kMostAtOnce = 8;

inline void Require(bool holds, std::uint32_t status = kBadParam) {
  if (!holds) throw Refusal{status};
}

// With the zero behind it.
void PutText(char* place, std::size_t size, const std::string& utf8);
template <std::size_t size>
void PutText(char (&place)[size], const std::string& utf8) {
  PutText(place, size, utf8);
}
// A text that must end within its place.
std::string TextIn(const char* place, std::size_t size);

// The places of one attribute's values.
class Places {
 public:
  Places(const AttrDesc& attribute, std::size_t index);

  void PutText(const std::string& utf8) const { vim32::PutText(place_, size_, utf8); }
  template <class Record>
  void Put(const Record& record) const {
    Require(size_ >= sizeof record, kBufTooSmall);
    std::memcpy(place_, &record, sizeof record);
  }
  // A word, or a double word where there is room for one.
  void PutNumber(std::uint32_t number) const;

 private:
  char* place_;
  std::size_t size_;
};

// `put` gets a Places and the attribute's selector, for each attribute.
template <class PutValue>
void PutAttributes(Word count, const AttrDesc* attributes, std::size_t index, PutValue put) {
  Require(count == 0 || attributes != nullptr);
  for (Word each = 0; each < count; ++each) {
    put(Places(attributes[each], index), attributes[each].attribute);
  }
}

// Moves an enumeration on: `skip` is 1 for the next, so that what follows it comes. `put` gets the
// number of a thing, and which of those of this call it is.
template <class PutThing>
void Enumerate(std::size_t total, Ref* position, std::int32_t skip, Word* count, Bool* more,
               PutThing put) {
  Require(position != nullptr && count != nullptr && more != nullptr && *count > 0);
  const std::int64_t wanted = std::int64_t{position->first} + skip - 1;
  Require(position->second == 0 && wanted >= 0);
  const std::size_t first = std::min(static_cast<std::size_t>(wanted), total);
  const std::size_t end = std::min(first + std::min<std::size_t>(*count, kMostAtOnce), total);
  for (std::size_t number = first; number < end; ++number) put(number, number - first);
  position->first = static_cast<std::uint32_t>(end);
  *count = static_cast<Word>(end - first);
  *more = end < total ? 1 : 0;
}

// One attribute of a message, and of a recipient or an entry of the address book.
void PutHeader(const desk::Message& message, const Places& places, std::uint32_t attribute);
void PutParty(const std::string& name, const std::string& address, const Places& places,
              std::uint32_t attribute);

// 1 To, 2 Cc, 3 Bcc, as the desk counts them; throws for what is none.
int ClassOf(std::uint32_t selector);

}  // namespace vim32
