// The operations a mail system offers to the dispatch layer. A back end implements those its system
// has.
//
// Results: kBackEndSuccess (-1), or the number of the mail system's own interface, which the
// dispatch layer folds into the public number space. A failure that is the server's own (a
// cancelled dialog 522, missing login data 544, a refused operation 530 with a text of its own,
// ...) is thrown as ServerError and reaches the client unfolded. An operation that needs a session
// logs in first.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/ServerError.h"
#include "mail/InstanceState.h"
#include "mail/SharedState.h"

namespace quillon {

inline constexpr std::int32_t kBackEndSuccess = -1;

enum class Operation {
  Login,
  Logout,
  Send,
  LoadMessageHeaders,
  LoadMessageIdentifiers,
  LoadMessage,
  DeleteMessage,
  MoveCopyMessage,
  UnreadCount,
  ResolveName,
  GetSessionHandle,
  SetSessionHandle,
  CreateFolder,
  DeleteFolder,
  CopyFolder,
  GetFolderList,
  FolderExists,
  Post,
};

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

  // Whether this back end has the operation for the mail system of its family (operations not
  // supported are never called).
  virtual bool Supports(MailSystemId system, Operation operation) const = 0;

  virtual std::int32_t Login(MailRequest& request);
  virtual std::int32_t Logout(MailRequest& request);
  virtual std::int32_t Send(MailRequest& request);
  virtual std::int32_t LoadMessageHeaders(MailRequest& request);
  virtual std::int32_t LoadMessageIdentifiers(MailRequest& request);
  virtual std::int32_t LoadMessage(MailRequest& request);    // of the header at messageIndex
  virtual std::int32_t DeleteMessage(MailRequest& request);  // of the header at messageIndex
  virtual std::int32_t MoveCopyMessage(MailRequest& request, const std::string& folder, bool copy);
  virtual std::int32_t UnreadCount(MailRequest& request, std::int32_t& count);
  virtual std::int32_t ResolveName(MailRequest& request, const std::string& name, bool withAddress,
                                   std::string& resolved);
  virtual std::int32_t GetSessionHandle(MailRequest& request, std::int32_t& handle);
  virtual std::int32_t SetSessionHandle(MailRequest& request, std::int32_t handle);
  virtual std::int32_t CreateFolder(MailRequest& request, const std::string& folder);
  virtual std::int32_t DeleteFolder(MailRequest& request, const std::string& folder);
  virtual std::int32_t CopyFolder(MailRequest& request, const std::string& from,
                                  const std::string& to, bool subfolders);
  virtual std::int32_t GetFolderList(MailRequest& request, const std::string& parent,
                                     bool returnSpecs, bool allCategories,
                                     std::vector<std::string>& folders);
  virtual std::int32_t FolderExists(MailRequest& request, const std::string& folder, bool& exists);
  virtual std::int32_t Post(MailRequest& request);

  virtual void SetErrorDisplay(bool on);

  // Ends the operation under way, if there is one.
  virtual void AsynchAbort() {}

  // The last Server of the process is gone: log out and free what is held. `savedHandle` is its
  // session handle of this family.
  virtual void Shutdown(std::int32_t savedHandle);

  // The text of an interface number; empty when the system has none.
  virtual std::string ErrorText(MailSystemId system, std::int32_t number) const = 0;
};

}  // namespace quillon
