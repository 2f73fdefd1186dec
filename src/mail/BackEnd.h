// The operations a mail system offers to the dispatch layer. A back end overrides those its system
// has; the others throw 530. Where the systems of a family differ, the operation itself throws it,
// before it does anything else.
//
// Results: a MailResult, whose number the dispatch layer folds into the public ones. A failure that
// is the server's own (a cancelled dialog 522, missing login data 544, a refused operation 530 with
// a text of its own,
// ...) is thrown as ServerError and reaches the client unfolded. An operation that needs a session
// logs in first.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/ServerError.h"
#include "mail/InstanceState.h"
#include "mail/MailResult.h"
#include "mail/SharedState.h"
#include "ports/AutomationObject.h"

namespace quillon {

class AddressBooks;

// What one call sees of the Server that makes it. Login data may be read back into the instance.
struct MailRequest {
  InstanceState& instance;
  SharedState& shared;
};

class BackEnd {
 public:
  BackEnd() = default;
  virtual ~BackEnd() = default;
  BackEnd(const BackEnd&) = delete;
  BackEnd& operator=(const BackEnd&) = delete;

  virtual MailResult Login(MailRequest& request);
  virtual MailResult Logout(MailRequest& request);
  virtual MailResult Send(MailRequest& request);
  virtual MailResult LoadMessageHeaders(MailRequest& request);
  virtual MailResult LoadMessageIdentifiers(MailRequest& request);
  virtual MailResult LoadMessage(MailRequest& request);    // of the header at messageIndex
  virtual MailResult DeleteMessage(MailRequest& request);  // of the header at messageIndex
  virtual MailResult MoveCopyMessage(MailRequest& request, const std::string& folder, bool copy);
  virtual MailResult UnreadCount(MailRequest& request, std::int32_t& count);
  virtual MailResult ResolveName(MailRequest& request, const std::string& name, bool withAddress,
                                 std::string& resolved);
  // Leaves the handle as it is where the instance itself keeps it.
  virtual MailResult GetSessionHandle(MailRequest& request, std::int32_t& handle);
  virtual MailResult SetSessionHandle(MailRequest& request, std::int32_t handle);
  virtual MailResult CreateFolder(MailRequest& request, const std::string& folder);
  virtual MailResult DeleteFolder(MailRequest& request, const std::string& folder);
  virtual MailResult CopyFolder(MailRequest& request, const std::string& from,
                                const std::string& to, bool subfolders);
  virtual MailResult GetFolderList(MailRequest& request, const std::string& parent,
                                   bool returnSpecs, bool allCategories,
                                   std::vector<std::string>& folders);
  virtual MailResult FolderExists(MailRequest& request, const std::string& folder, bool& exists);
  virtual MailResult Post(MailRequest& request);

  // The objects behind the session, and behind the message and the folder of the last operation;
  // null when there is none. A session that a client hands in is used as it is, and stays his.
  virtual AutomationObjectPtr SessionObject();
  virtual void SetSessionObject(const AutomationObjectPtr& session);
  virtual AutomationObjectPtr MessageObject();
  virtual AutomationObjectPtr FolderObject();

  // What Send returns when NativeMailDialog is on and the user closes the mail system's own window
  // without sending. Nothing where there is no such window.
  virtual std::optional<std::int32_t> NumberOfCancelledDialog() const { return std::nullopt; }

  // Null where the mail system has no address books.
  virtual AddressBooks* Books() { return nullptr; }

  virtual void SetErrorDisplay(bool on);

  // Ends the operation under way, if there is one.
  virtual void AsynchAbort() {}

  // The last Server of the process is gone: log out and free what is held. `savedHandle` is its
  // session handle of this family.
  virtual void Shutdown(std::int32_t savedHandle);
};

}  // namespace quillon
