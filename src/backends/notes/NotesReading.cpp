// The operations with the documents of a folder.
#include <functional>
#include <map>
#include <utility>

#include "backends/notes/NotesBackEnd.h"
#include "backends/notes/NotesMessage.h"
#include "backends/notes/NotesNumber.h"
#include "backends/notes/NotesValues.h"
#include "codec/AutomationDates.h"
#include "core/AutomationValues.h"
#include "core/ErrorCode.h"
#include "core/Text.h"
#include "mail/CurrentHeader.h"

namespace quillon {

namespace {

constexpr std::int32_t kMostUnread = 1000;
// More than a folder has; a view that never ends is not walked for ever.
constexpr std::int32_t kMostDocuments = 65536;

// What the headers of the table are from: this, the post office, and behind a line end the name of
// the folder or view.
std::string MailboxOf(const InstanceState& instance) {
  return "Notes " + instance.postOffice + "\n";
}

bool IsUnread(AutomationObject& document) {
  const auto read = IsRead(document);
  if (!read) {
    throw ServerError(error_code::kNotSupported,
                      "This version of Notes does not tell which messages are unread.");
  }
  return !*read;
}

bool HasBeenDeleted(AutomationObject& document) {
  try {
    return IsDeleted(document);
  } catch (const AutomationError&) {
    return false;
  }
}

// Calls `visit` with each document until it returns false. One that is deleted during the walk is
// left out.
void ForEachDocument(AutomationObject& view, bool unreadOnly,
                     const std::function<bool(const AutomationObjectPtr&)>& visit) {
  auto document = ObjectOf(view.Call("GetFirstDocument"));
  for (std::int32_t seen = 0; document != nullptr && seen < kMostDocuments; ++seen) {
    try {
      if ((!unreadOnly || IsUnread(*document)) && !visit(document)) return;
    } catch (const AutomationError&) {
      if (!HasBeenDeleted(*document)) throw;
    }
    document = ObjectOf(view.Call("GetNextDocument", Arguments({document})));
  }
}

double DayOf(AutomationObject& document) {
  const auto date = MessageDate(document);
  if (const auto* const day = std::get_if<AutomationDate>(&date)) return day->days;
  const auto parsed = ParseDate(TextOf(date));
  return parsed ? AutomationDateOf(*parsed).days : 0;
}

// The newest documents of a view, the newest first; those of one moment as the view has them.
std::vector<AutomationObjectPtr> NewestOf(AutomationObject& view, bool unreadOnly,
                                          std::size_t most) {
  std::multimap<double, AutomationObjectPtr, std::greater<>> newest;
  ForEachDocument(view, unreadOnly, [&](const AutomationObjectPtr& document) {
    newest.emplace(DayOf(*document), document);
    if (newest.size() > most) newest.erase(std::prev(newest.end()));
    return true;
  });
  std::vector<AutomationObjectPtr> documents;
  documents.reserve(newest.size());
  for (auto& [day, document] : newest) documents.push_back(std::move(document));
  return documents;
}

void AddHeader(HeaderTable& headers, AutomationObject& document, const std::string& dateFormat) {
  if (IsDeleted(document)) return;
  auto record = ReadNotesHeader(document, dateFormat);
  record.number = std::to_string(headers.size() + 1);
  headers.push_back(std::move(record));
}

}  // namespace

AutomationObjectPtr NotesBackEnd::FolderToRead(const MailRequest& request) {
  folder_ = nullptr;
  auto view = Folders(request).FindAny(request.instance.folder);
  view->Put("AutoUpdate", false);
  view->Call("Refresh");
  folder_ = view;
  return view;
}

MailResult NotesBackEnd::LoadMessageHeaders(MailRequest& request) {
  return Run(request, "Error getting mail headers (Notes)", [&] { LoadHeaders(request); });
}

void NotesBackEnd::LoadHeaders(MailRequest& request) {
  const auto& instance = request.instance;
  auto& headers = request.shared.headers;
  const auto view = FolderToRead(request);
  const bool unreadOnly = instance.unreadOnly != kFalse;
  const auto most = static_cast<std::size_t>(instance.maximumHeaders);
  // What has been read before a failure stays.
  headers.clear();
  request.shared.headerOrigin = {MailboxOf(instance) + TextOf(view->Get("Name"))};
  if (instance.dateSort != kFalse) {
    for (const auto& document : NewestOf(*view, unreadOnly, most)) {
      AddHeader(headers, *document, instance.dateFormat);
    }
    return;
  }
  ForEachDocument(*view, unreadOnly, [&](const AutomationObjectPtr& document) {
    AddHeader(headers, *document, instance.dateFormat);
    return headers.size() < most;
  });
}

MailResult NotesBackEnd::UnreadCount(MailRequest& request, std::int32_t& count) {
  return Run(request, "Error counting unread messages (Notes)", [&] {
    count = 0;
    const auto view = FolderToRead(request);
    ForEachDocument(*view, true, [&](const AutomationObjectPtr&) { return ++count < kMostUnread; });
  });
}

AutomationObjectPtr NotesBackEnd::CurrentDocument(const MailRequest& request) {
  document_ = nullptr;
  const auto id = CurrentHeader(request.shared, request.instance).uniqueId;
  if (!request.shared.headerOrigin.mailbox.starts_with(MailboxOf(request.instance))) {
    throw ServerError(error_code::kNoHeaders);
  }
  auto document = ObjectOf(Database(request)->Call("GetDocumentByUNID", Arguments({id})));
  if (document == nullptr || IsDeleted(*document)) {
    throw AutomationError(notes::kNoSuchDocument, "The message has been deleted.");
  }
  return document;
}

MailResult NotesBackEnd::LoadMessage(MailRequest& request) {
  return Run(request, "Error getting mail message (Notes)", [&] {
    const auto& instance = request.instance;
    auto document = CurrentDocument(request);
    auto loaded = ReadNotesMessage(*document, instance.dateFormat);
    ReceivedFiles files(ports_.files, request);
    if (instance.suppressAttachments == kFalse) ExtractFiles(*document, ports_.files, files);
    if (instance.peekOnly == kFalse) MarkRead(*document);
    loaded.attachments = files.Keep();
    MakeCurrent(request.shared.message, std::move(loaded));
    document_ = std::move(document);
  });
}

MailResult NotesBackEnd::DeleteMessage(MailRequest& request) {
  return Run(request, "Error deleting message (Notes)",
             [&] { CurrentDocument(request)->Call("Remove", Arguments({true})); });
}

MailResult NotesBackEnd::MoveCopyMessage(MailRequest& request, const std::string& folder,
                                         bool copy) {
  return Run(request, copy ? "Error copying message (Notes)" : "Error moving message (Notes)",
             [&] { MoveCopy(request, folder, copy); });
}

// A document can be in several folders at once: to copy it is to put it into one more.
void NotesBackEnd::MoveCopy(const MailRequest& request, const std::string& folder, bool copy) {
  if (folder.empty()) {
    throw AutomationError(notes::kBadFolderName, "No destination folder specified.");
  }
  auto document = CurrentDocument(request);
  const auto folders = Folders(request);
  const auto destination = folders.FindFolder(folder);
  const auto name = TextOf(destination->Get("Name"));
  document->Call("PutInFolder", Arguments({name}));
  folder_ = destination;
  const auto& mailbox = request.shared.headerOrigin.mailbox;
  const auto source = mailbox.substr(mailbox.rfind('\n') + 1);
  if (!copy && !EqualsIgnoreCase(source, name) && folders.HasFolder(source)) {
    document->Call("RemoveFromFolder", Arguments({source}));
  }
  document_ = std::move(document);
}

}  // namespace quillon
