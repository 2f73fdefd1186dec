// The Server object: the public members, free of COM. Every member checks its arguments before it
// changes any state and fails with ServerError (a public code and text) or, for a value of the
// wrong type, with ConversionError.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/ShortBool.h"
#include "core/Value.h"
#include "mail/AsynchNotifier.h"
#include "mail/InstanceState.h"
#include "server/Dispatch.h"
#include "server/Environment.h"
#include "server/ErrorFrame.h"
#include "server/Property.h"

namespace quillon {

struct DecodedError {
  MailSystemId mailSystem = mail_system::kNone;
  std::string message;
};

class Server {
 public:
  explicit Server(Environment& environment);
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  Value Get(Property property);
  void Put(Property property, const Value& value);

  // Composition.
  void AddRecipientTo(const std::string& theRecipient);
  void AddRecipientCc(const std::string& theRecipient);
  void AddRecipientBcc(const std::string& theRecipient);
  void AddAttachment(const std::string& theAttachment);
  void AddAttachmentEx(const std::string& theAttachment, const std::string& theName,
                       const std::string& contentType);
  void AddInlineFile(const std::string& theFile, const std::string& contentId);
  void AddAlternative(const std::string& theAlternative, const std::string& contentType,
                      std::int16_t reserved);
  void AddXHeader(const std::string& theName, const std::string& theValue);
  void AddHeader(const std::string& theName, const std::string& theValue);
  void NewMessage();
  void NewMessagePost();
  void LoadMessageFromFile(const std::string& fileSpec);
  void SaveMessageToFile(const std::string& fileSpec);

  // Items of the loaded message (or the one being composed) and of the header at messageIndex.
  std::vector<std::string> GetMessageItems(std::int16_t itemType);
  std::string GetMessageItemString(std::int16_t itemType);
  std::int32_t GetMessageItemCount(std::int16_t itemType);
  Value GetMessageItem(const Value& theItem, std::int32_t itemIndex);
  std::vector<std::string> GetHeaderItems(std::int16_t itemType);
  std::string GetHeaderItemString(std::int16_t itemType);
  std::vector<std::string> MessageItems(std::int16_t itemType);
  std::vector<std::string> HeaderItems(std::int16_t itemType);
  void ClearMessageItems(std::int16_t itemType);
  std::string GetHeaderValueByName(const std::string& theField);
  std::string GetWebFormValue(const std::string& fieldName);

  // Mail-system operations.
  void SetNativeSystem();
  std::int16_t QueryMailSystem(std::int16_t mailSystem);
  void Login();
  void Logout();
  void Send();
  void Post();
  void LoadMessageHeaders();
  void LoadMessageIdentifiers();
  void LoadMessage();
  void DeleteMessage();
  void MoveMessage(const std::string& folderTo);
  void CopyMessage(const std::string& folderTo);
  std::string ResolveName(const std::string& tName);
  std::string ResolveNameEx(const std::string& tName);
  void CreateFolder(const std::string& newFolderSpec);
  void DeleteFolder(const std::string& theFolderSpec);
  void CopyFolder(const std::string& folderFromSpec, const std::string& folderToSpec,
                  std::int16_t copySubfolders);
  std::vector<std::string> GetFolderList(const std::string& parentFolderSpec,
                                         std::int16_t returnSpecs, std::int16_t allCategories);
  std::string GetFolderListString(const std::string& parentFolderSpec, std::int16_t returnSpecs,
                                  const std::string& stringDelim, std::int16_t allCategories,
                                  std::int32_t& folderCount);
  std::vector<std::string> FolderList(const std::string& parentFolderSpec, std::int16_t returnSpecs,
                                      std::int16_t reserved);
  ShortBool FolderExists(const std::string& theFolderSpec);

  // Dialogs, notification, diagnostics.
  void ShowMailDialog();
  void ShowMailSystemDialog();
  // Null when the client's object cannot be called.
  void AsynchObjectRegister(std::shared_ptr<NotificationObject> asynchObject,
                            std::int32_t objectType, std::int32_t config);
  void AsynchObjectUnregister(std::int32_t objectType);
  void AsynchAbort();
  std::string GetInterfaceString(std::int16_t itemType);
  DecodedError DecodeError(std::int32_t errNumberIn);

  // What an AddressBook does with the mail system of this Server. Throws 752 when there is none,
  // 753 when it has no address books.
  using AddressBookCall = std::function<MailResult(AddressBooks& books, MailRequest& request)>;
  void WithAddressBooks(const char* member, MemberKind kind, const AddressBookCall& call);

  // The objects of Active Messaging; null when there is none.
  AutomationObjectPtr SessionObject();
  void PutSessionObject(const AutomationObjectPtr& session);
  AutomationObjectPtr MessageObject();
  AutomationObjectPtr FolderObject();

 private:
  using Recipients = std::vector<std::string> MessageBuffers::*;
  void AddRecipients(const char* member, Recipients list, const std::string& text,
                     std::int32_t fullCode);

  void AddFile(Attachment attachment);
  void RequireFile(const std::string& file) const;
  void PutSpecial(Property property, const Value& value);
  std::int32_t UnreadCount();
  std::int32_t SessionHandle();
  void PutSessionHandle(std::int32_t handle);
  void SwitchLog();

  const HeaderRecord& CurrentHeader() const;
  void MoveCopy(const char* member, const std::string& folder, bool copy);
  std::string Resolve(const char* member, const std::string& name, bool withAddress);
  std::vector<std::string> Folders(const char* member, const std::string& parent,
                                   std::int16_t returnSpecs, std::int16_t allCategories);

  // Whether the message has been sent, and not the window closed.
  bool SendInNativeDialog(std::int32_t cancelled);  // the number of a closed window
  bool SendInOwnDialog();

  AutomationObjectPtr ObjectOf(const char* member, AutomationObjectPtr (BackEnd::*object)());

  // A member that is one call of a back end.
  template <typename Call>
  void Operate(const char* member, Call&& call) {
    frame_.Run(member, MemberKind::Method, [&] { dispatch_.Run(std::forward<Call>(call)); });
  }

  InstanceState state_;
  Environment& environment_;
  Dispatch dispatch_;
  ErrorFrame frame_;
  Value commandResult_ = std::string();
};

}  // namespace quillon
