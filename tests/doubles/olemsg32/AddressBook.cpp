#include "olemsg32/AddressBook.h"

#include "core/Text.h"
#include "olemsg32/StoreId.h"

namespace desk {
namespace {

constexpr std::string_view kListName = "Post Office";

// A colon behind a word stands between a type and an address.
std::size_t LengthOfType(const std::string& address) {
  const std::size_t colon = address.find(':');
  return colon == std::string::npos || address.find('@') < colon ? 0 : colon;
}

}  // namespace

std::string IdOfEntry(const Entry& entry) {
  return HexOf(entry.name + "\n" + entry.address);
}

Entry EntryOfId(const std::string& id) {
  const std::vector<std::string> lines = quillon::Split(FromHex(id).value_or(""), "\n");
  if (lines.size() != 2) throw MemberError(MapiError::kNotFound);
  return {lines[0], lines[1]};
}

std::string TypeOfAddress(const std::string& address) {
  const std::size_t length = LengthOfType(address);
  return length == 0 ? "SMTP" : address.substr(0, length);
}

std::string WithoutType(const std::string& address) {
  const std::size_t length = LengthOfType(address);
  return length == 0 ? address : address.substr(length + 1);
}

std::span<const MemberOf<AddressListsObject>> AddressListsObject::Members() {
  static const std::vector<Row> members{
      {"Count", 9, "", [](AddressListsObject&, const Arguments&) { return FromNumber(1); }},
      {"Item", 21, "Index |",
       [](AddressListsObject& o, const Arguments& a) {
         PlaceOf(a.At(0), 1, [](std::size_t) { return kListName; });
         return MakeResult<AddressListObject>(o);
       }},
  };
  return members;
}

std::span<const MemberOf<AddressListObject>> AddressListObject::Members() {
  static const std::vector<Row> members{
      {"Name", 23, "", [](AddressListObject&, const Arguments&) { return FromText(kListName); }},
      {"ID", 14, "",
       [](AddressListObject&, const Arguments&) { return FromText(HexOf(kListName)); }},
      {"Index", 19, "", [](AddressListObject&, const Arguments&) { return FromNumber(1); }},
      {"IsReadOnly", 60, "", [](AddressListObject&, const Arguments&) { return FromFlag(true); }},
      {"AddressEntries", 3, "",
       [](AddressListObject& o, const Arguments&) { return MakeResult<AddressEntriesObject>(o); }},
  };
  return members;
}

Variant AddressEntriesObject::At(std::optional<std::size_t> place) {
  return place ? MakeResult<AddressEntryObject>(*this, entries_[*place]) : Nothing();
}

std::span<const MemberOf<AddressEntriesObject>> AddressEntriesObject::Members() {
  using Self = AddressEntriesObject;
  static const std::vector<Row> members{
      {"Count", 9, "",
       [](Self& o, const Arguments&) { return FromNumber(static_cast<long>(o.entries_.size())); }},
      {"Item", 21, "Index |",
       [](Self& o, const Arguments& a) {
         return o.At(PlaceOf(a.At(0), o.entries_.size(),
                             [&](std::size_t i) { return o.entries_[i].name; }));
       }},
      {"GetFirst", 109, "",
       [](Self& o, const Arguments&) { return o.At(o.cursor_.First(o.entries_.size())); }},
      {"GetNext", 111, "",
       [](Self& o, const Arguments&) { return o.At(o.cursor_.Next(o.entries_.size())); }},
      {"GetLast", 110, "",
       [](Self& o, const Arguments&) { return o.At(o.cursor_.Last(o.entries_.size())); }},
      {"GetPrevious", 112, "",
       [](Self& o, const Arguments&) { return o.At(o.cursor_.Previous(o.entries_.size())); }},
  };
  return members;
}

std::span<const MemberOf<AddressEntryObject>> AddressEntryObject::Members() {
  using Self = AddressEntryObject;
  static const std::vector<Row> members{
      {"Name", 23, "", [](Self& o, const Arguments&) { return FromText(o.entry_.name); }},
      {"Address", 2, "",
       [](Self& o, const Arguments&) { return FromText(WithoutType(o.entry_.address)); }},
      {"Type", 17, "",
       [](Self& o, const Arguments&) { return FromText(TypeOfAddress(o.entry_.address)); }},
      {"ID", 14, "", [](Self& o, const Arguments&) { return FromText(IdOfEntry(o.entry_)); }},
      {"DisplayType", 56, "",
       [](Self& o, const Arguments&) { return FromNumber(o.entry_.isGroup ? 1 : 0); }},
      {"IsSameAs", 136, "AddressEntry |",
       [](Self& o, const Arguments& a) {
         const auto* other = dynamic_cast<Self*>(Object::In(a.At(0)));
         if (other == nullptr) throw CallError(DISP_E_TYPEMISMATCH);
         return FromFlag(quillon::EqualsIgnoreCase(o.entry_.address, other->entry_.address));
       }},
  };
  return members;
}

}  // namespace desk
