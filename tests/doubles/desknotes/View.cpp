#include "desknotes/View.h"

#include <algorithm>

#include "core/Text.h"
#include "desknotes/Document.h"
#include "desknotes/Names.h"

namespace desk {
namespace {

// Entries of the address book have their places as identifiers, in figures that sort.
std::string BookId(std::size_t place) {
  const std::string figures = std::to_string(place);
  return std::string(6 - figures.size(), '0') + figures;
}

bool IsKeyOf(const Entry& entry, const std::string& key, bool exact) {
  std::vector<std::string> keys = quillon::Split(entry.name, " ");
  keys.insert(keys.end(), {entry.name, BareAddress(entry.address)});
  if (IsAccount(entry.address)) {
    keys.insert(keys.end(), {CanonicalName(entry.name), AbbreviatedName(entry.name)});
  }
  if (const std::optional<Account> account = TheStore().FindAccount(key)) {
    if (account->address == entry.address) return true;
  }
  return std::ranges::any_of(keys, [&](const std::string& own) {
    return quillon::EqualsIgnoreCase(exact ? own : own.substr(0, key.size()), key);
  });
}

// The document that stands beside one in the list, which itself may have gone.
std::size_t PlaceBeside(const std::vector<std::string>& ids, const std::string& id, bool next) {
  const auto place = next ? std::ranges::upper_bound(ids, id) : std::ranges::lower_bound(ids, id);
  return static_cast<std::size_t>(place - ids.begin()) - (next ? 0 : 1);
}

}  // namespace

Variant DocumentOf(const std::string& id, const std::optional<Account>& owner) {
  if (owner) return MakeResult<DocumentObject>(ReadDocument(owner->profile, id), owner);
  const std::vector<Entry> book = TheStore().AddressBook();
  const std::size_t place = std::stoul(id);
  if (place >= book.size()) return Nothing();
  DocumentPtr person = PersonDocument(book[place]);
  person->record.id = id;
  return MakeResult<DocumentObject>(std::move(person), owner);
}

const std::vector<std::string>& ViewObject::Ids() {
  if (looked_ && !autoUpdate_) return ids_;
  looked_ = true;
  ids_.clear();
  if (owner_) {
    ids_ = DocumentsIn(owner_->profile, view_);
  } else {
    const std::size_t count = TheStore().AddressBook().size();
    for (std::size_t i = 0; i < count; ++i) ids_.push_back(BookId(i));
  }
  return ids_;
}

Variant ViewObject::At(std::size_t place) {
  const std::vector<std::string>& ids = Ids();
  return place < ids.size() ? DocumentOf(ids[place], owner_) : Nothing();
}

Variant ViewObject::Beside(const VARIANT& document, bool next) {
  return At(PlaceBeside(Ids(), DocumentObject::In(document).record.id, next));
}

// Key, ExactMatch
Variant ViewObject::ByKey(const Arguments& arguments) {
  if (owner_) throw Failed("View is not sorted");
  std::vector<std::string> ids;
  const std::vector<Entry> book = TheStore().AddressBook();
  for (std::size_t i = 0; i < book.size(); ++i) {
    if (IsKeyOf(book[i], arguments.Text(0), arguments.Flag(1, false))) ids.push_back(BookId(i));
  }
  return MakeResult<CollectionObject>(std::move(ids), owner_);
}

// The documents stay in the mail file.
Variant ViewObject::Remove() {
  if (!owner_ || !view_.isFolder || view_.name.starts_with("(")) {
    throw Failed("You are not authorized to perform that operation");
  }
  const std::optional<Folder> folder = TheStore().FindFolder(owner_->profile, view_.folder->id);
  if (!folder) throw Failed("Folder is not known: " + view_.name);
  for (const std::string& id : TheStore().MessageIds(*folder)) {
    RemoveFrom(owner_->profile, id, *folder);
  }
  TheStore().RemoveFolder(*folder);
  return {};
}

std::span<const MemberOf<ViewObject>> ViewObject::Members() {
  using Self = ViewObject;
  static const std::vector<Row> members{
      {"Name", 1, "", [](Self& o, const Arguments&) { return FromText(o.view_.name); }},
      {"IsFolder", 2, "", [](Self& o, const Arguments&) { return FromFlag(o.view_.isFolder); }},
      {"AutoUpdate", 3, "", [](Self& o, const Arguments&) { return FromFlag(o.autoUpdate_); },
       [](Self& o, const Arguments&, const VARIANT& value) { o.autoUpdate_ = FlagOf(value); }},
      {"Refresh", 4, "",
       [](Self& o, const Arguments&) {
         o.looked_ = false;
         return Variant();
       }},
      {"GetFirstDocument", 5, "", [](Self& o, const Arguments&) { return o.At(0); }},
      {"GetLastDocument", 6, "",
       [](Self& o, const Arguments&) { return o.At(o.Ids().size() - 1); }},
      {"GetNextDocument", 7, "Document |",
       [](Self& o, const Arguments& a) { return o.Beside(a.At(0), true); }},
      {"GetPrevDocument", 8, "Document |",
       [](Self& o, const Arguments& a) { return o.Beside(a.At(0), false); }},
      {"GetNthDocument", 9, "Index |",
       [](Self& o, const Arguments& a) {
         return o.At(static_cast<std::size_t>(a.Number(0, 0)) - 1);
       }},
      {"GetAllDocumentsByKey", 10, "Key | ExactMatch",
       [](Self& o, const Arguments& a) { return o.ByKey(a); }},
      {"Remove", 11, "", [](Self& o, const Arguments&) { return o.Remove(); }},
  };
  return members;
}

Variant CollectionObject::At(std::size_t place) const {
  return place < ids_.size() ? DocumentOf(ids_[place], owner_) : Nothing();
}

std::span<const MemberOf<CollectionObject>> CollectionObject::Members() {
  using Self = CollectionObject;
  static const std::vector<Row> members{
      {"Count", 1, "",
       [](Self& o, const Arguments&) { return FromNumber(static_cast<long>(o.ids_.size())); }},
      {"GetFirstDocument", 2, "", [](Self& o, const Arguments&) { return o.At(0); }},
      {"GetNextDocument", 3, "Document |",
       [](Self& o, const Arguments& a) {
         return o.At(PlaceBeside(o.ids_, DocumentObject::In(a.At(0)).record.id, true));
       }},
  };
  return members;
}

}  // namespace desk
