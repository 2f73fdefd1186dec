#include "olemsg32/MessageObject.h"

#include <filesystem>
#include <vector>

#include "olemsg32/AddressBook.h"
#include "olemsg32/Attachments.h"
#include "olemsg32/Fields.h"
#include "olemsg32/Recipients.h"
#include "olemsg32/StoreId.h"

namespace desk {
namespace {

using Self = MessageObject;

template <auto Place>
MemberOf<Self> TextMember(std::string_view name, DISPID id) {
  return {name, id, "",
          [](Self& o, const Arguments&) { return FromText(o.State()->record.*Place); },
          [](Self& o, const Arguments&, const VARIANT& value) {
            o.State()->record.*Place = TextOf(value);
          }};
}

template <auto Place>
MemberOf<Self> FlagMember(std::string_view name, DISPID id) {
  return {name, id, "",
          [](Self& o, const Arguments&) { return FromFlag(o.State()->record.*Place); },
          [](Self& o, const Arguments&, const VARIANT& value) {
            o.State()->record.*Place = FlagOf(value);
          }};
}

template <class List>
MemberOf<Self> ListMember(std::string_view name, DISPID id) {
  return {name, id, "", [](Self& o, const Arguments&) { return MakeResult<List>(o, o.State()); }};
}

// What the store has no place for.
MemberOf<Self> NoFlag(std::string_view name, DISPID id) {
  return {name, id, "", [](Self&, const Arguments&) { return FromFlag(false); }};
}

bool IsPublic(const MessageState& state) {
  return state.mailbox == kPublicFolders;
}

// A message among the public ones goes nowhere: it is there for all to read.
void PostMessage(const Account& account, MessageState& state) {
  state.record.senderName = account.name;
  state.record.senderAddress = account.address;
  state.record.sent = true;
  state.record.unread = true;
  if (state.record.date.empty()) state.record.date = DateNow();
  SaveState(state);
}

}  // namespace

void MessageObject::CheckUsable() const {
  ChildOf::CheckUsable();
  if (state_->gone) throw MemberError(MapiError::kInvalidObject);
}

Variant MessageObject::Id() const {
  if (state_->unsaved) throw MemberError(MapiError::kNotFound);
  return FromText(state_->record.id);
}

Variant MessageObject::Sender() {
  const Message& record = state_->record;
  if (record.senderName.empty() && record.senderAddress.empty()) {
    throw MemberError(MapiError::kNotFound);
  }
  return MakeResult<AddressEntryObject>(*this, Entry{record.senderName, record.senderAddress});
}

Variant MessageObject::Date() const {
  std::optional<Variant> date = FromDateText(state_->record.date);
  if (!date) throw MemberError(MapiError::kNotFound);
  return std::move(*date);
}

Variant MessageObject::Size() const {
  std::uintmax_t size = state_->record.text.size() + state_->record.subject.size();
  for (const auto& part : state_->attachments) {
    std::error_code failure;
    const std::uintmax_t bytes = std::filesystem::file_size(part->record.path, failure);
    if (!failure) size += bytes;
  }
  return FromNumber(static_cast<long>(size));
}

// MakePermanent, RefreshObject
Variant MessageObject::Update(const Arguments& arguments) {
  if (arguments.Flag(0, true)) SaveState(*state_);
  if (arguments.Flag(1, false)) ReloadState(*state_);
  return {};
}

void MessageObject::AskUser() {
  constexpr std::string_view kSubject = "change subject ";
  constexpr std::string_view kAdd = "add ";
  const std::string word = TheStore().Dialog().value_or("cancel");
  if (word.starts_with(kSubject)) {
    state_->record.subject = word.substr(kSubject.size());
  } else if (word.starts_with(kAdd)) {
    state_->recipients.push_back(
        std::make_shared<Part<Recipient>>(Part<Recipient>{{1, word.substr(kAdd.size()), ""}}));
  } else if (word != "send") {
    throw MemberError(MapiError::kUserCancel);
  }
}

// SaveCopy, ShowDialog, ParentWindow
Variant MessageObject::Send(const Arguments& arguments) {
  if (arguments.Flag(1, false)) AskUser();
  if (IsPublic(*state_)) {
    PostMessage(Owner().User(), *state_);
  } else {
    if (state_->recipients.empty()) throw MemberError(MapiError::kNoRecipients);
    for (const auto& part : state_->recipients) ResolveRecipient(part->record, false);
    if (state_->record.conversationTopic.empty()) {
      state_->record.conversationTopic = state_->record.subject;
    }
    TheStore().Send(Owner().User(), WholeMessage(*state_), arguments.Flag(0, true));
  }
  state_->gone = true;
  return {};
}

Variant MessageObject::Delete() {
  if (!TheStore().Remove(state_->mailbox, state_->record.id)) {
    throw MemberError(MapiError::kObjectDeleted);
  }
  state_->gone = true;
  return {};
}

// FolderID, StoreID
Variant MessageObject::Transfer(const Arguments& arguments, bool copy) {
  const Folder target = Owner().FindFolder(arguments.Text(0), arguments.Text(1));
  std::string id = state_->record.id;
  if (copy) {
    id = TheStore().Copy(state_->mailbox, id, target).value_or("");
  } else if (TheStore().Move(state_->mailbox, id, target)) {
    state_->gone = true;
  } else {
    id.clear();
  }
  if (id.empty()) throw MemberError(MapiError::kObjectDeleted);
  return MakeResult<MessageObject>(*this, ReadState(target.mailbox, id));
}

Variant MessageObject::IsSameAs(const VARIANT& other) const {
  const auto* message = dynamic_cast<Self*>(Object::In(other));
  if (message == nullptr) throw CallError(DISP_E_TYPEMISMATCH);
  return FromFlag(message->state_->record.id == state_->record.id);
}

std::span<const MemberOf<MessageObject>> MessageObject::Members() {
  const auto date = [](Self& o, const Arguments&) { return o.Date(); };
  const auto putDate = [](Self& o, const Arguments&, const VARIANT& value) {
    o.state_->record.date = DateTextOf(DateOf(value));
  };
  static const std::vector<Row> members{
      TextMember<&Message::subject>("Subject", 38),
      TextMember<&Message::text>("Text", 39),
      TextMember<&Message::messageClass>("Type", 17),
      TextMember<&Message::conversationTopic>("ConversationTopic", 54),
      TextMember<&Message::conversationIndex>("ConversationIndex", 55),
      TextMember<&Message::conversationIndex>("Conversation", 8),
      FlagMember<&Message::unread>("Unread", 42),
      FlagMember<&Message::sent>("Sent", 33),
      FlagMember<&Message::sent>("Submitted", 18),
      FlagMember<&Message::receipt>("ReadReceipt", 30),
      FlagMember<&Message::delivery>("DeliveryReceipt", 50),
      NoFlag("Signed", 35),
      NoFlag("Encrypted", 10),
      {"Importance", 27, "",
       [](Self& o, const Arguments&) { return FromNumber(o.state_->record.importance); },
       [](Self& o, const Arguments&, const VARIANT& value) {
         o.state_->record.importance = ImportanceOf(value);
       }},
      {"TimeSent", 41, "", date, putDate},
      {"TimeReceived", 40, "", date, putDate},
      {"Sender", 32, "", [](Self& o, const Arguments&) { return o.Sender(); }},
      {"Size", 36, "", [](Self& o, const Arguments&) { return o.Size(); }},
      {"ID", 14, "", [](Self& o, const Arguments&) { return o.Id(); }},
      {"FolderID", 51, "",
       [](Self& o, const Arguments&) { return FromText(o.state_->record.folderId); }},
      {"StoreID", 52, "",
       [](Self& o, const Arguments&) { return FromText(HexOf(o.state_->mailbox)); }},
      ListMember<RecipientsObject>("Recipients", 28),
      ListMember<AttachmentsObject>("Attachments", 5),
      ListMember<FieldsObject>("Fields", 12),
      {"Update", 132, "MakePermanent RefreshObject",
       [](Self& o, const Arguments& a) { return o.Update(a); }},
      {"Send", 131, "SaveCopy ShowDialog ParentWindow",
       [](Self& o, const Arguments& a) { return o.Send(a); }},
      {"Delete", 106, "", [](Self& o, const Arguments&) { return o.Delete(); }},
      {"CopyTo", 104, "FolderID | StoreID",
       [](Self& o, const Arguments& a) { return o.Transfer(a, true); }},
      {"MoveTo", 120, "FolderID | StoreID",
       [](Self& o, const Arguments& a) { return o.Transfer(a, false); }},
      {"IsSameAs", 136, "Message |",
       [](Self& o, const Arguments& a) { return o.IsSameAs(a.At(0)); }},
  };
  return members;
}

}  // namespace desk
