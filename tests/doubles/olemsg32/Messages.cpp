#include "olemsg32/Messages.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/Text.h"
#include "olemsg32/Fields.h"
#include "olemsg32/MessageObject.h"

namespace desk {
namespace {

struct SortRow {
  std::uint32_t tag;
  std::string (*key)(const Message&);
};
std::string DateOfMessage(const Message& message) {
  return message.date;
}
constexpr std::array kSortable{
    SortRow{0x0E060040, DateOfMessage},  // received
    SortRow{0x00390040, DateOfMessage},  // sent
    SortRow{0x0037001E, [](const Message& m) { return quillon::UpperAscii(m.subject); }},
    SortRow{0x0C1A001E, [](const Message& m) { return quillon::UpperAscii(m.senderName); }},
    SortRow{0x001A001E, [](const Message& m) { return quillon::UpperAscii(m.messageClass); }},
    SortRow{0x00170003, [](const Message& m) { return std::to_string(m.importance); }},
};

}  // namespace

Folder MessagesObject::Present() const {
  const std::optional<Folder> folder = TheStore().FindFolder(folder_.mailbox, folder_.id);
  if (!folder) throw MemberError(MapiError::kNotFound);
  return *folder;
}

std::vector<std::string> MessagesObject::Shown() const {
  std::vector<std::string> ids = TheStore().MessageIds(Present());
  if (key_ != nullptr || !onlyType_.empty() || !rules_->SayNothing()) {
    std::vector<std::pair<std::string, std::string>> keys;
    for (const std::string& id : ids) {
      const std::optional<Message> message = TheStore().Read(folder_.mailbox, id);
      if (!message || !rules_->Match(*message)) continue;
      if (!onlyType_.empty() && !quillon::EqualsIgnoreCase(message->messageClass, onlyType_)) {
        continue;
      }
      keys.emplace_back(key_ == nullptr ? "" : key_(*message), id);
    }
    std::ranges::sort(keys);
    ids.clear();
    for (auto& [key, id] : keys) ids.push_back(std::move(id));
  }
  if (descending_) std::ranges::reverse(ids);
  return ids;
}

Variant MessagesObject::Item(const VARIANT& index) {
  const std::vector<std::string> ids = Shown();
  return MakeResult<MessageObject>(*this,
                                   ReadState(folder_.mailbox, ids[PlaceOf(index, ids.size())]));
}

// Subject, Text, Type, Importance
Variant MessagesObject::Add(const Arguments& arguments) {
  Message draft;
  draft.subject = arguments.Text(0);
  draft.text = arguments.Text(1);
  draft.messageClass = arguments.Text(2, draft.messageClass);
  if (arguments.Given(3)) draft.importance = ImportanceOf(arguments.At(3));
  return MakeResult<MessageObject>(*this, NewState(Present(), draft));
}

Variant MessagesObject::Delete() {
  for (const std::string& id : Shown()) TheStore().Remove(folder_.mailbox, id);
  return {};
}

// SortOrder, PropID
Variant MessagesObject::Sort(const Arguments& arguments) {
  const long order = arguments.Number(0, 1);
  if (order < 0 || order > 2) throw MemberError(MapiError::kInvalidParameter);
  const auto tag = static_cast<std::uint32_t>(arguments.Number(1, 0x0E060040));
  const auto* row = std::ranges::find(kSortable, tag, &SortRow::tag);
  if (row == kSortable.end()) throw MemberError(MapiError::kTooComplex);
  key_ = order == 0 ? nullptr : row->key;
  descending_ = order == 2;
  walking_ = false;
  return {};
}

Variant MessagesObject::Begin(const Arguments& arguments, Step step) {
  onlyType_ = arguments.Text(0);
  walked_ = Shown();
  walking_ = true;
  return Walk(step);
}

Variant MessagesObject::Walk(Step step) {
  if (!walking_) {
    walked_ = Shown();
    walking_ = true;
    cursor_ = {};
  }
  for (;;) {
    const std::optional<std::size_t> place = (cursor_.*step)(walked_.size());
    if (!place) return Nothing();
    // One that has gone since the walk began is passed over.
    std::optional<Message> message = TheStore().Read(folder_.mailbox, walked_[*place]);
    if (message && message->folderId == folder_.id) {
      return MakeResult<MessageObject>(*this, StateOf(folder_.mailbox, std::move(*message)));
    }
    if (step == &Cursor::First) step = &Cursor::Next;
    if (step == &Cursor::Last) step = &Cursor::Previous;
  }
}

// Nothing takes the filter off; what else is put must be a filter.
void MessagesObject::PutFilter(const VARIANT& value) {
  if (SaysNothing(value)) {
    *rules_ = {};
  } else {
    const auto* filter = dynamic_cast<MessageFilterObject*>(Object::In(value));
    if (filter == nullptr) throw CallError(DISP_E_TYPEMISMATCH);
    const FilterRules rules = filter->Rules();
    *rules_ = rules;
  }
  walking_ = false;
}

std::span<const MemberOf<MessagesObject>> MessagesObject::Members() {
  using Self = MessagesObject;
  static const std::vector<Row> members{
      {"Count", 9, "",
       [](Self& o, const Arguments&) { return FromNumber(static_cast<long>(o.Shown().size())); }},
      {"Filter", 61, "",
       [](Self& o, const Arguments&) { return MakeResult<MessageFilterObject>(o, o.rules_); },
       [](Self& o, const Arguments&, const VARIANT& value) { o.PutFilter(value); }},
      {"Item", 21, "Index |", [](Self& o, const Arguments& a) { return o.Item(a.At(0)); }},
      {"Add", 100, "Subject Text Type Importance",
       [](Self& o, const Arguments& a) { return o.Add(a); }},
      {"Delete", 106, "", [](Self& o, const Arguments&) { return o.Delete(); }},
      {"Sort", 134, "SortOrder PropID", [](Self& o, const Arguments& a) { return o.Sort(a); }},
      {"GetFirst", 109, "Filter",
       [](Self& o, const Arguments& a) { return o.Begin(a, &Cursor::First); }},
      {"GetLast", 110, "Filter",
       [](Self& o, const Arguments& a) { return o.Begin(a, &Cursor::Last); }},
      {"GetNext", 111, "", [](Self& o, const Arguments&) { return o.Walk(&Cursor::Next); }},
      {"GetPrevious", 112, "", [](Self& o, const Arguments&) { return o.Walk(&Cursor::Previous); }},
  };
  return members;
}

}  // namespace desk
