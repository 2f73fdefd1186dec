// The back end of Active Messaging: one session object of the process, whose members are called by
// name.
//
// A call of an object that fails ends the operation with the number that the error is in the mail
// system's table (ActiveMessagingNumber), after the box "ActiveMessaging Mail Error". Thrown as
// ServerError: 522 (cancelled login dialog), 534 (attachments that cannot be packed), 544 (login
// data that nobody can be asked for), 551 (a post without a folder), 532 and 533 (no such header).
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "backends/Diagnostic.h"
#include "backends/activemsg/ActiveMessagingAddressBooks.h"
#include "backends/activemsg/ActiveMessagingLibrary.h"
#include "backends/activemsg/ActiveMessagingSession.h"
#include "backends/activemsg/FolderTree.h"
#include "backends/activemsg/MessageDraft.h"
#include "mail/BackEnd.h"
#include "mail/INIUtilities.h"
#include "ports/FileSystem.h"
#include "ports/LocalClock.h"
#include "ports/LoginPrompt.h"
#include "ports/MessageBox.h"
#include "ports/RichTextLibrary.h"

namespace quillon {

struct ActiveMessagingPorts {
  ActiveMessagingLibrary& library;
  RichTextLibrary& richText;
  FileSystem& files;
  const LocalClock& clock;
  MessageBoxPort& messageBox;
  LoginPrompt& loginPrompt;
  clsINIUtilities& configuration;
};

class ActiveMessagingBackEnd final : public BackEnd {
 public:
  explicit ActiveMessagingBackEnd(const ActiveMessagingPorts& ports);

  MailResult Login(MailRequest& request) override;
  MailResult Logout(MailRequest& request) override;
  MailResult Send(MailRequest& request) override;
  std::optional<std::int32_t> NumberOfCancelledDialog() const override;
  MailResult LoadMessageHeaders(MailRequest& request) override;
  MailResult LoadMessage(MailRequest& request) override;
  MailResult DeleteMessage(MailRequest& request) override;
  MailResult MoveCopyMessage(MailRequest& request, const std::string& folder, bool copy) override;
  MailResult UnreadCount(MailRequest& request, std::int32_t& count) override;
  MailResult ResolveName(MailRequest& request, const std::string& name, bool withAddress,
                         std::string& resolved) override;
  MailResult CreateFolder(MailRequest& request, const std::string& folder) override;
  MailResult DeleteFolder(MailRequest& request, const std::string& folder) override;
  // The copy goes into the folder `to`.
  MailResult CopyFolder(MailRequest& request, const std::string& from, const std::string& to,
                        bool subfolders) override;
  // With `returnSpecs` paths from the store on, else names; with `allCategories` everything below,
  // else one level. FolderTree::List says what an empty parent is.
  MailResult GetFolderList(MailRequest& request, const std::string& parent, bool returnSpecs,
                           bool allCategories, std::vector<std::string>& folders) override;
  MailResult FolderExists(MailRequest& request, const std::string& folder, bool& exists) override;
  MailResult Post(MailRequest& request) override;
  AddressBooks* Books() override { return &books_; }
  void Shutdown(std::int32_t savedHandle) override;

  // The object of the session: the client's that was put, or our own, which is made for this when
  // there is none; null when it cannot be made.
  AutomationObjectPtr SessionObject() override;
  // A client's session is used as it is, as one that is logged on, and never logged off. Null: our
  // own again.
  void SetSessionObject(const AutomationObjectPtr& session) override;
  // What the last operation with a message, or with a folder, has worked with; null when it has
  // failed, or has left none.
  AutomationObjectPtr MessageObject() override { return message_; }
  AutomationObjectPtr FolderObject() override { return folder_; }

 private:
  // Runs an operation; `context` is what the box says of a failure.
  MailResult Run(const MailRequest& request, const std::string& context,
                 const std::function<void()>& operation);

  // The session, logged on.
  AutomationObjectPtr LogOn(MailRequest& request);
  FolderTree Folders(MailRequest& request);

  // The messages of the folder that headers come from, those of one type or of every type;
  // `storeId` is that of its store, empty for the inbox.
  AutomationObjectPtr MessagesToRead(MailRequest& request, bool unreadOnly, const std::string& type,
                                     std::string& storeId);
  AutomationObjectPtr FolderToRead(MailRequest& request, std::string& storeId);
  // The message of the header at messageIndex.
  AutomationObjectPtr CurrentMessage(MailRequest& request, const std::string& context);
  void MoveCopy(MailRequest& request, const std::string& folder, bool copy);

  void SendMessage(MailRequest& request);
  void PostMessage(MailRequest& request);
  // Saves the message of `messages`, with its body as rich text where it is such.
  void Save(const MailRequest& request, AutomationObject& session, AutomationObject& messages,
            MessageDraft& draft);

  ActiveMessagingPorts ports_;
  ActiveMessagingSession session_;
  Diagnostic diagnostic_;
  ActiveMessagingAddressBooks books_{session_, diagnostic_};
  AutomationObjectPtr message_;
  AutomationObjectPtr folder_;
};

}  // namespace quillon
