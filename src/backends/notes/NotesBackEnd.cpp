#include "backends/notes/NotesBackEnd.h"

#include "backends/RecipientParts.h"
#include "backends/notes/NotesAddressBook.h"
#include "backends/notes/NotesNumber.h"

namespace quillon {

namespace {

constexpr const char* kBoxTitle = "Mail Error";

std::string NoText(std::int32_t) {
  return {};
}

}  // namespace

NotesBackEnd::NotesBackEnd(const NotesPorts& ports)
    : ports_(ports),
      session_(ports.objects, ports.workstation, ports.files),
      diagnostic_(ports.messageBox, kBoxTitle, NoText),
      books_(session_, [this](const MailRequest& request, const std::string& context,
                              const std::function<void()>& operation) {
        return Run(request, context, operation);
      }) {}

MailResult NotesBackEnd::Run(const MailRequest& request, const std::string& context,
                             const std::function<void()>& operation) {
  try {
    operation();
    return {};
  } catch (const AutomationError& error) {
    if (IsClientGone(error)) Forget();
    return diagnostic_.Fail(request, context, NotesNumber(error.Number()), error.what());
  }
}

void NotesBackEnd::Forget() {
  document_ = nullptr;
  folder_ = nullptr;
  session_.End();
}

AutomationObjectPtr NotesBackEnd::Database(const MailRequest& request) {
  return session_.MailDatabase(request.instance.postOffice);
}

NotesFolders NotesBackEnd::Folders(const MailRequest& request) {
  return {Database(request), request.instance.folderDelimiter};
}

MailResult NotesBackEnd::Login(MailRequest& request) {
  return Run(request, "Error opening mail database (Notes)", [&] { Database(request); });
}

MailResult NotesBackEnd::Logout(MailRequest&) {
  Forget();
  return {};
}

void NotesBackEnd::Shutdown(std::int32_t) {
  Forget();
}

AutomationObjectPtr NotesBackEnd::SessionObject() {
  try {
    return session_.Object();
  } catch (const AutomationError&) {
    return nullptr;
  }
}

void NotesBackEnd::SetSessionObject(const AutomationObjectPtr& session) {
  Forget();
  session_.Use(session);
}

MailResult NotesBackEnd::ResolveName(MailRequest& request, const std::string& name,
                                     bool withAddress, std::string& resolved) {
  return Run(request, "Error resolving name (Notes) - " + name, [&] {
    resolved.clear();
    Database(request);  // which finds out whether the client is still there
    const auto entry = FindInAddressBooks(*session_.Object(), name);
    resolved = withAddress ? FormatRecipient(entry.name, entry.address) : entry.name;
  });
}

MailResult NotesBackEnd::DeleteFolder(MailRequest& request, const std::string& folder) {
  folder_ = nullptr;
  return Run(request, "Error deleting folder (Notes) - " + folder,
             [&] { Folders(request).Delete(folder); });
}

MailResult NotesBackEnd::GetFolderList(MailRequest& request, const std::string& parent,
                                       bool returnSpecs, bool allCategories,
                                       std::vector<std::string>& folders) {
  return Run(request, "Error accessing folder list (Notes) - " + parent, [&] {
    folders.clear();
    folders = Folders(request).List(parent, returnSpecs, allCategories);
  });
}

MailResult NotesBackEnd::FolderExists(MailRequest& request, const std::string& folder,
                                      bool& exists) {
  folder_ = nullptr;
  return Run(request, "Error getting folder (Notes) - " + folder, [&] {
    exists = false;
    folder_ = Folders(request).Find(folder);
    exists = folder_ != nullptr;
  });
}

}  // namespace quillon
