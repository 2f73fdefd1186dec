// The back end of Notes: a session object of the client, and the user's mail database in it.
//
// A call of an object that fails ends the operation with its number (NotesNumber) and the client's
// own words, after the box "Mail Error". A client that has gone is forgotten: the next operation
// begins with a new one. Thrown as ServerError: 530 (a client that does not tell what is unread),
// 532 and 533 (no such header), 534 and 535 (attachments that cannot be packed or copied).
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "backends/Diagnostic.h"
#include "backends/notes/NotesAddressBooks.h"
#include "backends/notes/NotesFolders.h"
#include "backends/notes/NotesSession.h"
#include "mail/BackEnd.h"
#include "ports/FileSystem.h"
#include "ports/MessageBox.h"

namespace quillon {

struct NotesPorts {
  AutomationObjects& objects;
  Workstation& workstation;
  FileSystem& files;
  MessageBoxPort& messageBox;
};

class NotesBackEnd final : public BackEnd {
 public:
  explicit NotesBackEnd(const NotesPorts& ports);

  MailResult Login(MailRequest& request) override;
  MailResult Logout(MailRequest& request) override;
  MailResult Send(MailRequest& request) override;
  MailResult LoadMessageHeaders(MailRequest& request) override;
  MailResult LoadMessage(MailRequest& request) override;
  MailResult DeleteMessage(MailRequest& request) override;
  // A message that is moved stays in a view that shows it wherever it is.
  MailResult MoveCopyMessage(MailRequest& request, const std::string& folder, bool copy) override;
  MailResult UnreadCount(MailRequest& request, std::int32_t& count) override;
  MailResult ResolveName(MailRequest& request, const std::string& name, bool withAddress,
                         std::string& resolved) override;
  MailResult DeleteFolder(MailRequest& request, const std::string& folder) override;
  MailResult GetFolderList(MailRequest& request, const std::string& parent, bool returnSpecs,
                           bool allCategories, std::vector<std::string>& folders) override;
  MailResult FolderExists(MailRequest& request, const std::string& folder, bool& exists) override;
  AddressBooks* Books() override { return &books_; }
  void Shutdown(std::int32_t savedHandle) override;

  // As Active Messaging has them: the session (null when there is no client), the document and the
  // folder or view of the last operation. A client's session serves until Logout.
  AutomationObjectPtr SessionObject() override;
  void SetSessionObject(const AutomationObjectPtr& session) override;
  AutomationObjectPtr MessageObject() override { return document_; }
  AutomationObjectPtr FolderObject() override { return folder_; }

 private:
  // Runs an operation; `context` is what the box says of a failure.
  MailResult Run(const MailRequest& request, const std::string& context,
                 const std::function<void()>& operation);
  void Forget();

  AutomationObjectPtr Database(const MailRequest& request);
  NotesFolders Folders(const MailRequest& request);
  // The folder or view that headers come from.
  AutomationObjectPtr FolderToRead(const MailRequest& request);
  // The document of the header at messageIndex.
  AutomationObjectPtr CurrentDocument(const MailRequest& request);

  void SendMessage(const MailRequest& request);
  void LoadHeaders(MailRequest& request);
  void MoveCopy(const MailRequest& request, const std::string& folder, bool copy);

  NotesPorts ports_;
  NotesSession session_;
  Diagnostic diagnostic_;
  NotesAddressBooks books_;
  AutomationObjectPtr document_;
  AutomationObjectPtr folder_;
};

}  // namespace quillon
