#include "olemsg32/Recipients.h"

#include <algorithm>
#include <vector>

#include "olemsg32/AddressBook.h"

namespace desk {
namespace {

int ClassOf(long number) {
  if (number < 1 || number > 3) throw MemberError(MapiError::kInvalidParameter);
  return static_cast<int>(number);
}

std::string Typed(const std::string& address) {
  return address.empty() ? address : TypeOfAddress(address) + ":" + WithoutType(address);
}

// "pick 2" is a user who takes the second; without a display nobody is asked.
const Entry& Chosen(const std::vector<Entry>& entries, bool dialog) {
  constexpr std::string_view kPick = "pick ";
  const std::optional<std::string> word = dialog ? TheStore().Dialog() : std::nullopt;
  if (!word) throw MemberError(MapiError::kAmbiguousRecipient);
  if (!word->starts_with(kPick)) throw MemberError(MapiError::kUserCancel);
  const std::size_t number = std::stoul(word->substr(kPick.size()));
  if (number < 1 || number > entries.size()) throw MemberError(MapiError::kUserCancel);
  return entries[number - 1];
}

}  // namespace

void ResolveRecipient(Recipient& recipient, bool dialog) {
  if (!recipient.address.empty()) return;
  const std::vector<Entry> entries = TheStore().Resolve(recipient.name);
  if (entries.empty()) throw MemberError(MapiError::kNotFound);
  const Entry& chosen = entries.size() > 1 ? Chosen(entries, dialog) : entries[0];
  recipient.name = chosen.name;
  recipient.address = chosen.address;
}

Variant RecipientsObject::Item(const VARIANT& index) {
  const Parts<Recipient>& parts = State()->recipients;
  const std::size_t place =
      PlaceOf(index, parts.size(), [&](std::size_t i) { return parts[i]->record.name; });
  return MakeResult<RecipientObject>(*this, State(), parts[place]);
}

// Name, Address, Type, EntryID
Variant RecipientsObject::Add(const Arguments& arguments) {
  Recipient added{ClassOf(arguments.Number(2, 1)), arguments.Text(0), Typed(arguments.Text(1))};
  if (arguments.Given(3)) {
    const Entry entry = EntryOfId(arguments.Text(3));
    added.name = entry.name;
    added.address = entry.address;
  }
  State()->recipients.push_back(
      std::make_shared<Part<Recipient>>(Part<Recipient>{std::move(added)}));
  return MakeResult<RecipientObject>(*this, State(), State()->recipients.back());
}

Variant RecipientsObject::Choose(Object& parent, const VARIANT& given) {
  const std::optional<std::string> word = TheStore().Dialog();
  if (word != "send" && word != "add all") throw MemberError(MapiError::kUserCancel);
  auto* const before = dynamic_cast<RecipientsObject*>(Object::In(given));
  const auto state = before != nullptr ? before->State() : std::make_shared<MessageState>();
  if (word == "add all") {
    for (const Entry& entry : TheStore().AddressBook()) {
      Part<Recipient> part{{1, entry.name, Typed(entry.address)}};
      state->recipients.push_back(std::make_shared<Part<Recipient>>(std::move(part)));
    }
  }
  return MakeResult<RecipientsObject>(parent, state);
}

Variant RecipientsObject::Resolved() const {
  return FromFlag(std::ranges::none_of(
      State()->recipients, [](const auto& part) { return part->record.address.empty(); }));
}

// As many as can be; the failure of the first that cannot.
Variant RecipientsObject::Resolve(bool dialog) {
  std::optional<MemberError> failure;
  for (const auto& part : State()->recipients) {
    try {
      ResolveRecipient(part->record, dialog);
    } catch (const MemberError& e) {
      if (!failure) failure = e;
    }
  }
  if (failure) throw MemberError(*failure);
  return {};
}

Variant RecipientsObject::Delete() {
  for (const auto& part : State()->recipients) part->gone = true;
  State()->recipients.clear();
  return {};
}

std::span<const MemberOf<RecipientsObject>> RecipientsObject::Members() {
  using Self = RecipientsObject;
  static const std::vector<Row> members{
      {"Count", 9, "",
       [](Self& o, const Arguments&) {
         return FromNumber(static_cast<long>(o.State()->recipients.size()));
       }},
      {"Item", 21, "Index |", [](Self& o, const Arguments& a) { return o.Item(a.At(0)); }},
      {"Add", 100, "Name Address Type EntryID",
       [](Self& o, const Arguments& a) { return o.Add(a); }},
      {"Resolved", 29, "", [](Self& o, const Arguments&) { return o.Resolved(); }},
      {"Resolve", 130, "ShowDialog",
       [](Self& o, const Arguments& a) { return o.Resolve(a.Flag(0, true)); }},
      {"Delete", 106, "", [](Self& o, const Arguments&) { return o.Delete(); }},
  };
  return members;
}

Variant RecipientObject::AddressEntry() {
  if (It().address.empty()) throw MemberError(MapiError::kNotFound);
  return MakeResult<AddressEntryObject>(*this, Entry{It().name, It().address});
}

std::span<const MemberOf<RecipientObject>> RecipientObject::Members() {
  using Self = RecipientObject;
  static const std::vector<Row> members{
      {"Name", 23, "", [](Self& o, const Arguments&) { return FromText(o.It().name); },
       [](Self& o, const Arguments&, const VARIANT& value) { o.It().name = TextOf(value); }},
      {"Address", 2, "", [](Self& o, const Arguments&) { return FromText(o.It().address); },
       [](Self& o, const Arguments&, const VARIANT& value) {
         o.It().address = Typed(TextOf(value));
       }},
      {"Type", 17, "", [](Self& o, const Arguments&) { return FromNumber(o.It().recipientClass); },
       [](Self& o, const Arguments&, const VARIANT& value) {
         o.It().recipientClass = ClassOf(NumberOf(value));
       }},
      {"Index", 19, "",
       [](Self& o, const Arguments&) { return FromNumber(o.IndexIn(o.State()->recipients)); }},
      {"ID", 14, "",
       [](Self& o, const Arguments&) {
         return FromText(IdOfEntry({o.It().name, o.It().address}));
       }},
      {"DisplayType", 56, "", [](Self&, const Arguments&) { return FromNumber(0); }},
      {"AddressEntry", 53, "", [](Self& o, const Arguments&) { return o.AddressEntry(); }},
      {"Resolve", 130, "ShowDialog",
       [](Self& o, const Arguments& a) {
         ResolveRecipient(o.It(), a.Flag(0, true));
         return Variant();
       }},
      {"Delete", 106, "",
       [](Self& o, const Arguments&) { return o.RemoveFrom(o.State()->recipients); }},
  };
  return members;
}

}  // namespace desk
