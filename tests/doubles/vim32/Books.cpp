// The one address book.
#include <windows.h>

#include "Values.h"
#include "core/Text.h"
#include "desk/win32/AnsiText.h"

namespace vim32 {
namespace {

using desk::Utf8From;
using quillon::EqualsIgnoreCase;

constexpr char kBook[] = "Desk";
constexpr std::uint32_t kEntryRef = 0x45;
constexpr std::uint32_t kRoot = 0xFFFFFFFF;

bool Matches(const desk::Entry& entry, const std::string& name, std::uint32_t match) {
  if (match == kSelFull) return EqualsIgnoreCase(entry.name, name);
  Require(match == kSelPartial, kInvalidSelector);
  return EqualsIgnoreCase(std::string_view(entry.name).substr(0, name.size()), name);
}

void PutEntry(const desk::Entry& entry, const Places& places, std::uint32_t attribute) {
  if (attribute == kSelType) return places.Put(entry.isGroup ? kSelGroup : kSelEntity);
  PutParty(entry.name, entry.address, places, attribute);
}

// The whole book is searched, and nothing below it is known.
void RequireWholeBook(Ref subtree, const char* subtreeName) {
  const bool whole = subtree.first == 0 && (subtree.second == 0 || subtree.second == kRoot);
  Require(whole && (subtreeName == nullptr || *subtreeName == '\0'));
}

}  // namespace

extern "C" {

std::uint32_t WINAPI VIMEnumerateAddressBooks(Handle session, Ref* position, std::int32_t skip,
                                              Word attributeCount, const AttrDesc* attributes,
                                              Word* count, Bool* more) {
  return Call({"VIMEnumerateAddressBooks"}, {}, [&](Library& library) {
    library.Get<Session>(session);
    Enumerate(1, position, skip, count, more, [&](std::size_t, std::size_t index) {
      PutAttributes(attributeCount, attributes, index,
                    [](const Places& places, std::uint32_t attribute) {
                      Require(attribute == kSelName, kNoSuchAttribute);
                      places.PutText(kBook);
                    });
    });
  });
}

std::uint32_t WINAPI VIMOpenAddressBook(Handle session, const char* name, Handle* book) {
  return Call({"VIMOpenAddressBook"}, "name=" + Utf8From(name), [&](Library& library) {
    Require(book != nullptr);
    library.Get<Session>(session);
    Require(EqualsIgnoreCase(Utf8From(name), kBook), kNameNotFound);
    *book = library.Open(session, Book{library.store.AddressBook()});
  });
}

std::uint32_t WINAPI VIMCloseAddressBook(Handle book) {
  return Call({"VIMCloseAddressBook"}, {}, [&](Library& library) { library.Close<Book>(book); });
}

std::uint32_t WINAPI VIMEnumerateAddressBookEntries(Handle book, Ref subtree,
                                                    const char* subtreeName, Ref* position,
                                                    std::int32_t skip, Word attributeCount,
                                                    const AttrDesc* attributes, Word* count,
                                                    std::uint32_t filter, const void*, Bool* more) {
  return Call({"VIMEnumerateAddressBookEntries"}, {}, [&](Library& library) {
    const std::vector<desk::Entry>& entries = library.Get<Book>(book).entries;
    RequireWholeBook(subtree, subtreeName);
    Require(filter == kSelNoFilter, kInvalidSelector);
    Enumerate(entries.size(), position, skip, count, more,
              [&](std::size_t number, std::size_t index) {
                PutAttributes(attributeCount, attributes, index,
                              [&](const Places& places, std::uint32_t attribute) {
                                PutEntry(entries[number], places, attribute);
                              });
              });
  });
}

std::uint32_t WINAPI VIMMatchAddressBook(Handle book, Ref subtree, const char* subtreeName,
                                         std::uint32_t attribute, const void* data,
                                         std::uint32_t match, Ref* found, Ref* position) {
  const std::string name = Utf8From(static_cast<const char*>(data));
  const std::string told = "name=" + name + " match=" + std::to_string(match);
  return Call({"VIMMatchAddressBook"}, told, [&](Library& library) {
    library.Get<Book>(book);
    RequireWholeBook(subtree, subtreeName);
    Require(attribute == kSelName, kInvalidSelector);
    Require(found != nullptr && !name.empty());
    const std::vector<desk::Entry> entries = library.store.AddressBook();
    const auto entry = std::find_if(entries.begin(), entries.end(), [&](const desk::Entry& each) {
      return Matches(each, name, match);
    });
    Require(entry != entries.end(), kNoMatch);
    const auto number = static_cast<std::uint32_t>(entry - entries.begin());
    *found = {number, kEntryRef};
    if (position != nullptr) *position = {number, 0};
  });
}

std::uint32_t WINAPI VIMGetABEntryAttributes(Handle book, Ref entry, const char* name, Word count,
                                             const AttrDesc* attributes) {
  return Call({"VIMGetABEntryAttributes"}, {}, [&](Library& library) {
    library.Get<Book>(book);
    const std::vector<desk::Entry> entries = library.store.AddressBook();
    Require(entry.second == kEntryRef && entry.first < entries.size());
    Require(name == nullptr || *name == '\0');
    const desk::Entry& found = entries[entry.first];
    PutAttributes(count, attributes, 0, [&](const Places& places, std::uint32_t attribute) {
      PutParty(found.name, found.address, places, attribute);
    });
  });
}

}  // extern "C"

}  // namespace vim32
