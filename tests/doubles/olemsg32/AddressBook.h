// The address book of the post office.
#pragma once

#include <vector>

#include "olemsg32/Collection.h"
#include "olemsg32/Session.h"

namespace desk {

std::string IdOfEntry(const Entry& entry);
Entry EntryOfId(const std::string& id);  // throws kNotFound

// "SMTP" and "joe@x" of "SMTP:joe@x"; an address without a type is one of the Internet.
std::string TypeOfAddress(const std::string& address);
std::string WithoutType(const std::string& address);

class AddressListsObject final : public ChildOf<AddressListsObject> {
 public:
  static constexpr std::string_view kName = "AddressLists";
  static constexpr long kNumber = 20;
  static constexpr std::string_view kDefault = "Item";
  static std::span<const MemberOf<AddressListsObject>> Members();

  explicit AddressListsObject(Object& parent) : ChildOf(parent) {}
};

class AddressListObject final : public ChildOf<AddressListObject> {
 public:
  static constexpr std::string_view kName = "AddressList";
  static constexpr long kNumber = 7;
  static constexpr std::string_view kDefault = "Name";
  static std::span<const MemberOf<AddressListObject>> Members();

  explicit AddressListObject(Object& parent) : ChildOf(parent) {}
};

class AddressEntriesObject final : public ChildOf<AddressEntriesObject> {
 public:
  static constexpr std::string_view kName = "AddressEntries";
  static constexpr long kNumber = 21;
  static constexpr std::string_view kDefault = "Item";
  static std::span<const MemberOf<AddressEntriesObject>> Members();

  explicit AddressEntriesObject(Object& parent)
      : ChildOf(parent), entries_(TheStore().AddressBook()) {}

 private:
  Variant At(std::optional<std::size_t> place);

  std::vector<Entry> entries_;
  Cursor cursor_;
};

class AddressEntryObject final : public ChildOf<AddressEntryObject> {
 public:
  static constexpr std::string_view kName = "AddressEntry";
  static constexpr long kNumber = 8;
  static constexpr std::string_view kDefault = "Name";
  static std::span<const MemberOf<AddressEntryObject>> Members();

  AddressEntryObject(Object& parent, Entry entry) : ChildOf(parent), entry_(std::move(entry)) {}

 private:
  Entry entry_;
};

}  // namespace desk
