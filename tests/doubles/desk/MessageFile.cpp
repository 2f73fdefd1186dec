#include "desk/MessageFile.h"

#include <charconv>
#include <set>

namespace desk {
namespace {

namespace fs = std::filesystem;

constexpr const char* kClassKeys[] = {"to", "cc", "bcc"};

int Number(std::string_view text, int otherwise) {
  int number = otherwise;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

void TakeLine(const fs::path& directory, const PlainFile::Line& line, Message& message) {
  for (int index = 0; index < 3; ++index) {
    if (line.key != kClassKeys[index]) continue;
    const std::vector<std::string> columns = Columns(line.value, 2);
    message.recipients.push_back({index + 1, columns[0], columns[1]});
  }
  if (line.key == "attachment") {
    const std::vector<std::string> columns = Columns(line.value, 5);
    Attachment attachment;
    attachment.name = columns[0];
    if (!columns[1].empty()) attachment.path = directory / columns[1];
    attachment.position = Number(columns[2], -1);
    attachment.type = Number(columns[3], 1);
    attachment.source = columns[4];
    message.attachments.push_back(attachment);
  }
  if (line.key == "field") {
    const std::vector<std::string> columns = Columns(line.value, 3);
    message.fields.push_back({columns[0], columns[2], Number(columns[1], 8)});
  }
}

// The file that holds an attachment's bytes in the directory: the one it has there, or a copy, for
// which names from `number` on may be free.
std::string StoredFile(const fs::path& directory, const Attachment& attachment, int& number) {
  if (attachment.path.empty()) return {};
  if (attachment.path.parent_path() == directory) return attachment.path.filename().string();
  for (;; ++number) {
    std::string name = std::to_string(number) + ".file";
    if (fs::exists(directory / name)) continue;
    fs::copy_file(attachment.path, directory / name);
    return name;
  }
}

void AddRecipients(const Message& message, PlainFile& file) {
  for (const Recipient& recipient : message.recipients) {
    const int index = recipient.recipientClass - 1;
    if (index < 0 || index > 2) throw StoreError("no such class of recipients");
    file.AddColumns(kClassKeys[index], {recipient.name, recipient.address});
  }
}

}  // namespace

std::optional<Message> ReadMessage(const fs::path& directory) {
  const std::optional<PlainFile> file = ReadPlainFile(directory / "message.txt");
  if (!file) return std::nullopt;
  Message message;
  message.subject = file->Value("subject");
  message.text = file->text;
  message.messageClass = file->Value("class");
  message.senderName = file->Value("sender");
  message.senderAddress = file->Value("sender address");
  message.date = file->Value("date");
  message.conversationIndex = file->Value("conversation index");
  message.conversationTopic = file->Value("conversation topic");
  message.importance = Number(file->Value("importance"), 1);
  message.sensitivity = Number(file->Value("sensitivity"), 0);
  message.unread = file->Flag("unread");
  message.receipt = file->Flag("receipt");
  message.delivery = file->Flag("delivery");
  message.sent = file->Flag("sent");
  if (file->Flag("rich")) message.richText = ReadBytes(directory / "rich.txt").value_or("");
  for (const PlainFile::Line& line : file->lines) TakeLine(directory, line, message);
  return message;
}

void WriteMessage(const fs::path& directory, const Message& message) {
  PlainFile file;
  file.Add("subject", message.subject);
  file.Add("class", message.messageClass);
  file.AddUnlessEmpty("sender", message.senderName);
  file.AddUnlessEmpty("sender address", message.senderAddress);
  file.AddUnlessEmpty("date", message.date);
  file.AddFlag("unread", message.unread);
  file.AddFlag("receipt", message.receipt);
  file.AddFlag("delivery", message.delivery);
  file.AddFlag("sent", message.sent);
  if (message.importance != 1) file.Add("importance", std::to_string(message.importance));
  if (message.sensitivity != 0) file.Add("sensitivity", std::to_string(message.sensitivity));
  file.AddUnlessEmpty("conversation index", message.conversationIndex);
  file.AddUnlessEmpty("conversation topic", message.conversationTopic);
  AddRecipients(message, file);
  std::set<std::string> kept;
  int number = 1;
  for (const Attachment& attachment : message.attachments) {
    const std::string stored = StoredFile(directory, attachment, number);
    kept.insert(stored);
    file.AddColumns("attachment", {attachment.name, stored, std::to_string(attachment.position),
                                   std::to_string(attachment.type), attachment.source});
  }
  for (const Field& field : message.fields) {
    file.AddColumns("field", {field.name, std::to_string(field.type), field.value});
  }
  file.AddFlag("rich", !message.richText.empty());
  if (!message.richText.empty()) ReplaceBytes(directory / "rich.txt", message.richText);
  file.text = message.text;
  ReplacePlainFile(directory / "message.txt", file);
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    const fs::path& path = entry.path();
    if (path.extension() == ".file" && !kept.contains(path.filename().string())) fs::remove(path);
  }
}

}  // namespace desk
