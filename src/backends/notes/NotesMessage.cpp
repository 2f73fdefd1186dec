#include "backends/notes/NotesMessage.h"

#include <utility>

#include "backends/notes/NotesNumber.h"
#include "backends/notes/NotesValues.h"
#include "codec/AutomationDates.h"
#include "core/AutomationValues.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::int32_t kAttachmentItem = 1084;

std::vector<std::string> Names(AutomationObject& document, const char* item) {
  auto names = ItemTexts(document, item);
  for (auto& name : names) name = PlainName(name);
  return names;
}

std::string Originator(AutomationObject& document) {
  return PlainName(ItemText(document, "From"));
}

std::int16_t OwnImportance(const std::string& importance) {
  if (importance == "1") return 1;
  return importance == "3" ? std::int16_t{5} : std::int16_t{3};
}

std::string StatusOf(AutomationObject& document) {
  const auto read = IsRead(document);
  if (!read) return {};
  return *read ? kStatusRead : kStatusUnread;
}

std::string BodyText(AutomationObject& document) {
  const auto body = ObjectOf(document.Call("GetFirstItem", Arguments({"Body"})));
  return body != nullptr ? TextOf(body->Get("Text")) : std::string();
}

// The name by which the client knows an attachment, which is unlike that of any other.
std::string AttachmentName(AutomationObject& item) {
  if (NumberOf(item.Get("Type")) != kAttachmentItem) return {};
  const auto values = ElementsOf(item.Get("Values"));
  return values.empty() ? std::string() : TextOf(values.front());
}

void ExtractFile(AutomationObject& attachment, const std::string& name, FileSystem& system,
                 ReceivedFiles& files) {
  const auto source = TextOf(attachment.Get("Source"));
  const auto path = files.NewFile(source.empty() ? name : source);
  if (path.empty()) {
    throw AutomationError(notes::kAttachmentWriteFailure, "An attached file could not be written.");
  }
  // The client's own directory need not be this program's.
  attachment.Call("ExtractFile", Arguments({system.FullPath(path)}));
}

}  // namespace

HeaderRecord ReadNotesHeader(AutomationObject& document, const std::string& dateFormat) {
  HeaderRecord record;
  record.uniqueId = TextOf(document.Get("UniversalID"));
  record.messageId = ItemText(document, "$MessageID");
  record.subject = ItemText(document, "Subject");
  record.originator = Originator(document);
  record.replyAddress = PlainName(ItemText(document, "ReplyTo"));
  if (record.replyAddress.empty()) record.replyAddress = record.originator;
  record.to = Join(Names(document, "SendTo"), ", ");
  record.cc = Join(Names(document, "CopyTo"), ", ");
  record.dateText = ReceivedDateText(MessageDate(document), dateFormat);
  record.status = StatusOf(document);
  record.priority = OwnImportance(ItemText(document, "Importance"));
  record.receiptRequested = ToShortBool(ItemText(document, "ReturnReceipt") == "1");
  return record;
}

LoadedMessage ReadNotesMessage(AutomationObject& document, const std::string& dateFormat) {
  LoadedMessage loaded;
  loaded.to = Names(document, "SendTo");
  loaded.cc = Names(document, "CopyTo");
  loaded.bcc = Names(document, "BlindCopyTo");
  loaded.from = Originator(document);
  loaded.subject = ItemText(document, "Subject");
  loaded.body = BodyText(document);
  loaded.dateText = ReceivedDateText(MessageDate(document), dateFormat);
  return loaded;
}

void ExtractFiles(AutomationObject& document, FileSystem& system, ReceivedFiles& files) {
  if (!TruthOf(document.Get("HasEmbedded"))) return;
  for (const auto& element : ElementsOf(document.Get("Items"))) {
    const auto item = ObjectOf(element);
    const auto name = item != nullptr ? AttachmentName(*item) : std::string();
    if (name.empty()) continue;
    const auto attachment = ObjectOf(document.Call("GetAttachment", Arguments({name})));
    if (attachment != nullptr) ExtractFile(*attachment, name, system, files);
  }
}

}  // namespace quillon
