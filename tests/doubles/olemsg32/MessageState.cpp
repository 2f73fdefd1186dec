#include "olemsg32/MessageState.h"

#include <utility>

#include "desk/win32/TheStore.h"
#include "olemsg32/Errors.h"

namespace desk {
namespace {

template <class Record, class From>
Parts<Record> PartsOf(std::vector<From>& records) {
  Parts<Record> parts;
  for (From& record : records) {
    parts.push_back(std::make_shared<Part<Record>>());
    static_cast<From&>(parts.back()->record) = std::move(record);
  }
  records.clear();
  return parts;
}

template <class Record, class To>
void AddRecords(const Parts<Record>& parts, std::vector<To>& records) {
  for (const auto& part : parts) records.push_back(part->record);
}

template <class Record>
void Let(Parts<Record>& parts) {
  for (const auto& part : parts) part->gone = true;
  parts.clear();
}

void TakeMessage(MessageState& state, Message message) {
  state.recipients = PartsOf<Recipient>(message.recipients);
  state.attachments = PartsOf<TakenAttachment>(message.attachments);
  state.fields = PartsOf<Field>(message.fields);
  state.record = std::move(message);
}

}  // namespace

MessageStatePtr StateOf(const std::string& mailbox, Message message) {
  auto state = std::make_shared<MessageState>();
  state->mailbox = mailbox;
  TakeMessage(*state, std::move(message));
  return state;
}

MessageStatePtr ReadState(const std::string& mailbox, const std::string& id) {
  std::optional<Message> message = TheStore().Read(mailbox, id);
  if (!message) throw MemberError(MapiError::kNotFound);
  return StateOf(mailbox, std::move(*message));
}

MessageStatePtr NewState(const Folder& folder, const Message& draft) {
  MessageStatePtr state = ReadState(folder.mailbox, TheStore().Add(folder, draft));
  state->unsaved = true;
  return state;
}

Message WholeMessage(const MessageState& state) {
  Message message = state.record;
  AddRecords(state.recipients, message.recipients);
  AddRecords(state.attachments, message.attachments);
  AddRecords(state.fields, message.fields);
  const std::optional<Message> stored = TheStore().Read(state.mailbox, message.id);
  if (!stored) throw MemberError(MapiError::kObjectDeleted);
  message.richText = stored->richText;
  return message;
}

void SaveState(MessageState& state) {
  const Message message = WholeMessage(state);
  if (!TheStore().Change(state.mailbox, message)) throw MemberError(MapiError::kObjectDeleted);
  state.unsaved = false;
  // The bytes of its attachments are in the store now.
  const std::optional<Message> stored = TheStore().Read(state.mailbox, message.id);
  if (!stored || stored->attachments.size() != state.attachments.size()) return;
  for (std::size_t i = 0; i < stored->attachments.size(); ++i) {
    state.attachments[i]->record.path = stored->attachments[i].path;
    state.attachments[i]->record.taken.reset();
  }
}

void ReloadState(MessageState& state) {
  std::optional<Message> message = TheStore().Read(state.mailbox, state.record.id);
  if (!message) throw MemberError(MapiError::kObjectDeleted);
  Let(state.recipients);
  Let(state.attachments);
  Let(state.fields);
  TakeMessage(state, std::move(*message));
}

void TakeFile(TakenAttachment& attachment, const std::string& path) {
  attachment.taken = TakenFile::Of(path);
  if (!attachment.taken) throw MemberError(MapiError::kNotFound);
  attachment.path = attachment.taken->Path();
}

}  // namespace desk
