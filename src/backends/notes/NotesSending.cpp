// Sending a message: a document that the client keeps in memory until it is sent, so that nothing
// of it is left when that fails.
#include <array>

#include "backends/OutgoingFiles.h"
#include "backends/RecipientParts.h"
#include "backends/notes/NotesAddressBook.h"
#include "backends/notes/NotesBackEnd.h"
#include "backends/notes/NotesNumber.h"
#include "backends/notes/NotesValues.h"
#include "core/AutomationValues.h"
#include "core/ErrorCode.h"
#include "core/WholeFile.h"
#include "mail/OutgoingText.h"

namespace quillon {

namespace {

constexpr std::int32_t kEmbedAttachment = 1454;

struct RecipientItem {
  std::vector<std::string> MessageBuffers::*entries;
  const char* item;
};
constexpr std::array kRecipientItems{
    RecipientItem{&MessageBuffers::to, "SendTo"},
    RecipientItem{&MessageBuffers::cc, "CopyTo"},
    RecipientItem{&MessageBuffers::bcc, "BlindCopyTo"},
};

constexpr std::array kReports{"N", "B", "C", "T"};  // by deliveryReport

// An Internet address goes with its name; any other recipient is one name of the client's.
std::string RecipientText(const std::string& text) {
  const auto parts = SplitRecipient(text);
  if (parts.address.empty()) return parts.name;
  return parts.address.find('@') != std::string::npos ? text : parts.address;
}

void PutRecipients(AutomationObject& document, AutomationObject& session,
                   const MailRequest& request) {
  for (const auto& [entries, item] : kRecipientItems) {
    std::vector<AutomationValue> names;
    names.reserve((request.shared.message.*entries).size());
    for (const auto& entry : request.shared.message.*entries) {
      auto text = RecipientText(entry);
      const bool resolve =
          request.instance.nameResolution != kFalse && text.find('@') == std::string::npos;
      names.emplace_back(resolve ? FindInAddressBooks(session, text).name : std::move(text));
    }
    if (!names.empty()) PutItem(document, item, names);
  }
}

void PutTextIfAny(AutomationObject& document, const char* item, const std::string& text) {
  if (!text.empty()) PutItem(document, item, text);
}

const char* ThreeWays(std::int16_t value, std::array<const char*, 3> ways) {
  return value < 3 ? ways[0] : value == 3 ? ways[1] : ways[2];
}

void PutOptions(AutomationObject& document, const MailRequest& request) {
  const auto& instance = request.instance;
  PutItem(document, "Importance", ThreeWays(instance.importance, {"1", "2", "3"}));
  PutItem(document, "DeliveryPriority", ThreeWays(instance.deliveryPriority, {"H", "N", "L"}));
  PutItem(document, "DeliveryReport",
          kReports.at(static_cast<std::size_t>(instance.deliveryReport)));
  if (request.shared.message.certify != kFalse) PutItem(document, "ReturnReceipt", "1");
  if (instance.preventCopying != kFalse) PutItem(document, "$KeepPrivate", "1");
  // The items are what the reader's client shows, the properties what the sender's does.
  if (instance.signedMessage != kFalse) {
    PutItem(document, "Sign", "1");
    document.Put("SignOnSend", true);
  }
  if (instance.encrypt != kFalse) {
    PutItem(document, "Encrypt", "1");
    document.Put("EncryptOnSend", true);
  }
}

// A rich text takes line ends by a call of their own.
void AppendText(AutomationObject& body, std::string_view text) {
  std::int32_t newLines = 0;
  const auto breakLines = [&] {
    if (newLines > 0) body.Call("AddNewLine", Arguments({newLines}));
    newLines = 0;
  };
  while (!text.empty()) {
    const auto length = std::min(text.find_first_of("\r\n"), text.size());
    if (length > 0) {
      breakLines();
      body.Call("AppendText", Arguments({std::string(text.substr(0, length))}));
      text.remove_prefix(length);
    } else {
      ++newLines;
      text.remove_prefix(text.starts_with("\r\n") ? 2 : 1);
    }
  }
  breakLines();
}

// What a file can be called; the client of a program chooses what readers see.
std::string FileNameFor(const std::string& displayName) {
  std::string name(FileNameOf(displayName));
  for (auto& character : name) {
    const bool isForbidden = static_cast<unsigned char>(character) < ' ' ||
                             std::string_view("<>:\"|?*").find(character) != std::string_view::npos;
    if (isForbidden) character = '_';
  }
  return name;
}

// The reader sees the name of the file that is embedded: one of another name is copied.
class NamedFiles {
 public:
  NamedFiles(FileSystem& files, const ProcessSwitches& switches)
      : files_(files), folder_(files, switches.temporaryDirectory, switches.keepTemporaryFiles) {}

  std::string PathOf(const Attachment& attachment) {
    // The client's own directory need not be this program's.
    if (FileNameOf(attachment.file) == attachment.displayName) {
      return files_.FullPath(attachment.file);
    }
    const auto path = folder_.NewNamedFile(FileNameFor(attachment.displayName));
    if (path.empty() || !files_.CopyWholeFile(attachment.file, path)) {
      throw ServerError(error_code::kEncoding);
    }
    return files_.FullPath(path);
  }

 private:
  FileSystem& files_;
  TemporaryFolder folder_;
};

}  // namespace

MailResult NotesBackEnd::Send(MailRequest& request) {
  document_ = nullptr;
  return Run(request, "Error sending mail (Notes)", [&] { SendMessage(request); });
}

void NotesBackEnd::SendMessage(const MailRequest& request) {
  const auto database = Database(request);
  const OutgoingFiles attachments(ports_.files, request);
  const auto& message = request.shared.message;
  const auto document =
      RequireNotesObject(database->Call("CreateDocument"), "There is no new document.");
  PutItem(*document, "Form", "Memo");
  PutRecipients(*document, *session_.Object(), request);
  PutItem(*document, "Subject", message.subject);
  PutTextIfAny(*document, "Principal", message.from);
  PutTextIfAny(*document, "ReplyTo", message.replyTo);
  PutOptions(*document, request);
  const auto body = RequireNotesObject(document->Call("CreateRichTextItem", Arguments({"Body"})),
                                       "There is no new rich-text item.");
  AppendText(*body, OutgoingText(message));
  NamedFiles files(ports_.files, request.shared.switches);
  for (const auto& attachment : attachments.List()) {
    RequireNotesObject(
        body->Call("EmbedObject", Arguments({kEmbedAttachment, "", files.PathOf(attachment)})),
        "A file could not be attached.");
  }
  document->Put("SaveMessageOnSend", true);
  document->Call("Send", Arguments({false}));
  document_ = document;
}

}  // namespace quillon
