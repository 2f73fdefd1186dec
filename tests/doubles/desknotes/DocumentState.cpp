#include "desknotes/DocumentState.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/Text.h"
#include "desknotes/Names.h"
#include "desknotes/NotesObject.h"

namespace desk {
namespace {

constexpr std::size_t kUniversalLength = 32;
constexpr std::size_t kStoreLength = 17;
constexpr std::array<const char*, 3> kRecipients{"SendTo", "CopyTo", "BlindCopyTo"};
// What the message's own members keep.
constexpr std::array<std::string_view, 7> kOwn{"SendTo",     "CopyTo",        "BlindCopyTo", "From",
                                               "PostedDate", "DeliveredDate", "Body"};
constexpr char kAlsoIn[] = "AlsoIn";

std::vector<std::string> AlsoIn(const Message& message) {
  const auto field = std::ranges::find(message.fields, kAlsoIn, &Field::name);
  return field == message.fields.end() ? std::vector<std::string>{}
                                       : quillon::Split(field->value, ";");
}

void SetAlsoIn(Message& message, const std::vector<std::string>& folders) {
  std::erase_if(message.fields, [](const Field& field) { return field.name == kAlsoIn; });
  if (!folders.empty()) message.fields.push_back({kAlsoIn, quillon::Join(folders, ";")});
}

Message ReadExisting(const std::string& mailbox, const std::string& id) {
  std::optional<Message> message = TheStore().Read(mailbox, id);
  if (!message) throw Failed("Document has been deleted");
  return std::move(*message);
}

void AddItems(DocumentState& document) {
  const Message& record = document.record;
  document.Replace("Form", {"Memo"});
  for (std::size_t i = 0; i < kRecipients.size(); ++i) {
    std::vector<std::string> names;
    for (const Recipient& recipient : record.recipients) {
      if (recipient.recipientClass != static_cast<int>(i) + 1) continue;
      names.push_back(NotesNameOf(recipient.name, recipient.address));
    }
    if (!names.empty()) document.Replace(kRecipients[i], std::move(names));
  }
  document.Replace("From", {NotesNameOf(record.senderName, record.senderAddress)});
  document.Replace("Subject", {record.subject});
  if (!record.date.empty()) {
    document.Replace("PostedDate", {record.date}, kDates);
    document.Replace("DeliveredDate", {record.date}, kDates);
  }
  document.Replace("Importance", {std::to_string(3 - record.importance)});
  if (record.receipt) document.Replace("ReturnReceipt", {"1"});
  for (const Field& field : record.fields) {
    document.Replace(field.name, quillon::Split(field.value, "\n"));
  }
  document.Replace("Body", {record.text}, kRichText);
  for (const Attachment& attachment : record.attachments) {
    if (attachment.type == 1) document.Embed(attachment.name, attachment.path);
  }
}

// Who is not known stays as the client wrote it, until the document is sent.
Recipient RecipientAsWritten(const std::string& text, int recipientClass) {
  try {
    return RecipientOf(text, recipientClass);
  } catch (const MemberError&) {
    return {recipientClass, text, {}};
  }
}

// The items as the store's message.
Message MessageOf(DocumentState& document, Recipient (*recipientOf)(const std::string&, int)) {
  Message message = document.record;
  message.subject = document.Text("Subject");
  message.text = document.Text("Body");
  message.receipt = document.Text("ReturnReceipt") == "1";
  message.delivery = document.Text("DeliveryReport") == "C";
  const std::string importance = document.Text("Importance");
  if (importance == "1" || importance == "3") message.importance = importance == "1" ? 2 : 0;
  const std::vector<std::string> alsoIn = AlsoIn(message);
  message.fields.clear();
  SetAlsoIn(message, alsoIn);
  message.recipients.clear();
  for (const Item& item : document.items) {
    const auto* place = std::ranges::find(kRecipients, item.name);
    if (place != kRecipients.end()) {
      for (const std::string& name : item.values) {
        const int recipientClass = static_cast<int>(place - kRecipients.begin()) + 1;
        if (!name.empty()) message.recipients.push_back(recipientOf(name, recipientClass));
      }
    } else if (item.type != kAttachment && item.name != "Subject" && item.name != kAlsoIn &&
               std::ranges::find(kOwn, item.name) == kOwn.end()) {
      message.fields.push_back({item.name, quillon::Join(item.values, "\n")});
    }
  }
  message.attachments.clear();
  for (const EmbeddedFile& file : document.files) {
    Attachment attachment;
    attachment.name = file.source;
    attachment.path = file.path;
    message.attachments.push_back(std::move(attachment));
  }
  return message;
}

}  // namespace

Item* DocumentState::Find(const std::string& name) {
  const auto found = std::ranges::find_if(
      items, [&](const Item& item) { return quillon::EqualsIgnoreCase(item.name, name); });
  return found == items.end() ? nullptr : &*found;
}

std::string DocumentState::Text(const std::string& name) {
  const Item* item = Find(name);
  return item == nullptr || item->values.empty() ? "" : item->values[0];
}

void DocumentState::Replace(const std::string& name, std::vector<std::string> values, long type) {
  Item* item = Find(name);
  if (item == nullptr) item = &items.emplace_back(Item{name, type, {}});
  item->type = type;
  item->values = std::move(values);
}

void DocumentState::Embed(const std::string& source, std::filesystem::path path,
                          std::shared_ptr<TakenFile> taken) {
  const bool used = std::ranges::any_of(files, [&](const EmbeddedFile& file) {
    return quillon::EqualsIgnoreCase(file.name, source);
  });
  std::string name = used ? "ATT" + std::to_string(10000 + files.size()) + ".dat" : source;
  items.push_back({"$FILE", kAttachment, {name}});
  files.push_back({std::move(name), source, std::move(path), std::move(taken)});
}

DocumentPtr ReadDocument(const std::string& mailbox, const std::string& id) {
  auto document = std::make_shared<DocumentState>();
  document->mailbox = mailbox;
  std::optional<Message> message = TheStore().Read(mailbox, id);
  if (message) document->record = std::move(*message);
  document->record.id = id;
  if (message) AddItems(*document);
  return document;
}

DocumentPtr PersonDocument(const Entry& entry) {
  auto document = std::make_shared<DocumentState>();
  document->Replace("Form", {entry.isGroup ? "Group" : "Person"});
  const bool ours = IsAccount(entry.address);
  document->Replace(entry.isGroup ? "ListName" : "FullName",
                    {ours ? CanonicalName(entry.name) : entry.name, entry.name});
  document->Replace("InternetAddress", {BareAddress(entry.address)});
  document->Replace("MailAddress", {BareAddress(entry.address)});
  return document;
}

bool IsStillThere(const DocumentState& document) {
  return document.mailbox.empty() || document.record.id.empty() ||
         TheStore().Read(document.mailbox, document.record.id).has_value();
}

void SaveDocument(DocumentState& document) {
  Store& store = TheStore();
  Message message = MessageOf(document, RecipientAsWritten);
  if (message.id.empty()) {
    document.record.id = store.Add(store.Root(document.mailbox), message);
  } else if (!store.Change(document.mailbox, message)) {
    throw Failed("Document has been deleted");
  }
}

void SendDocument(DocumentState& document, const Account& account) {
  Message message = MessageOf(document, RecipientOf);
  if (message.recipients.empty()) throw MemberError(NotesError::kNoSuchName);
  message.fields.push_back({"$AssistMail", "1"});
  document.record.id = TheStore().Send(account, std::move(message), document.keepWhenSent);
}

bool IsIn(const Message& message, const Folder& folder) {
  const std::vector<std::string> also = AlsoIn(message);
  return message.folderId == folder.id || std::ranges::find(also, folder.id) != also.end();
}

void PutIn(const std::string& mailbox, const std::string& id, const Folder& folder) {
  Store& store = TheStore();
  Message message = ReadExisting(mailbox, id);
  if (IsIn(message, folder)) return;
  if (message.folderId == store.Root(mailbox).id) {
    store.Move(mailbox, id, folder);
    return;
  }
  std::vector<std::string> also = AlsoIn(message);
  also.push_back(folder.id);
  SetAlsoIn(message, also);
  store.Change(mailbox, message);
}

void RemoveFrom(const std::string& mailbox, const std::string& id, const Folder& folder) {
  Store& store = TheStore();
  Message message = ReadExisting(mailbox, id);
  if (!IsIn(message, folder)) return;
  std::vector<std::string> also = AlsoIn(message);
  std::optional<Folder> home = store.FindFolder(mailbox, message.folderId);
  if (message.folderId == folder.id) {
    home = store.Root(mailbox);
    // Another of its folders has it from now on, or none.
    while (!also.empty()) {
      const std::optional<Folder> next = store.FindFolder(mailbox, also.back());
      also.pop_back();
      if (next) {
        home = next;
        break;
      }
    }
  }
  std::erase(also, folder.id);
  SetAlsoIn(message, also);
  store.Change(mailbox, message);
  if (home) store.Move(mailbox, id, *home);
}

std::string NoteIdOf(const std::string& id) {
  constexpr std::size_t kNoteLength = 8;
  return id.size() < kNoteLength ? id : id.substr(id.size() - kNoteLength);
}

std::string UniversalId(const std::string& id) {
  return id.size() > kUniversalLength ? "" : std::string(kUniversalLength - id.size(), '0') + id;
}

std::string StoreIdOf(const std::string& universalId) {
  if (universalId.size() != kUniversalLength) return {};
  return quillon::UpperAscii(universalId.substr(kUniversalLength - kStoreLength));
}

}  // namespace desk
