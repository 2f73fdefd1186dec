// The members that work with a mail system.
#include "core/Text.h"
#include "mail/MailSystemKeyword.h"
#include "ports/Workstation.h"
#include "server/ErrorTable.h"
#include "server/MailSystems.h"
#include "server/Server.h"

namespace quillon {

namespace {

// Item types of GetInterfaceString.
constexpr std::int16_t kInterfaceKeyword = 40;
constexpr std::int16_t kInterfaceLibrary = 41;
constexpr std::int16_t kInterfaceFile = 42;
constexpr std::int16_t kInterfaceKind = 43;

constexpr const char* kOwnMaker = "Quillon";

}  // namespace

void Server::SetNativeSystem() {
  frame_.Run("SetNativeSystem", MemberKind::Method, [&] { dispatch_.Detect(); });
}

std::int16_t Server::QueryMailSystem(std::int16_t mailSystem) {
  return frame_.Run("QueryMailSystem", MemberKind::Method,
                    [&] { return ToShortBool(dispatch_.Query(mailSystem)); });
}

void Server::Login() {
  Operate("Login", [](BackEnd& backEnd, MailRequest& request) { return backEnd.Login(request); });
}

void Server::Logout() {
  Operate("Logout", [](BackEnd& backEnd, MailRequest& request) { return backEnd.Logout(request); });
}

void Server::Send() {
  frame_.Run("Send", MemberKind::Method, [&] {
    const auto& message = environment_.shared.message;
    if (message.to.empty() && message.cc.empty() && message.bcc.empty()) {
      throw ServerError(error_code::kNoAddressees);
    }
    dispatch_.Run([](BackEnd& backEnd, MailRequest& request) { return backEnd.Send(request); });
  });
}

void Server::Post() {
  Operate("Post", [](BackEnd& backEnd, MailRequest& request) { return backEnd.Post(request); });
}

void Server::LoadMessageHeaders() {
  Operate("LoadMessageHeaders", [](BackEnd& backEnd, MailRequest& request) {
    return backEnd.LoadMessageHeaders(request);
  });
}

void Server::LoadMessageIdentifiers() {
  Operate("LoadMessageIdentifiers", [](BackEnd& backEnd, MailRequest& request) {
    return backEnd.LoadMessageIdentifiers(request);
  });
}

void Server::LoadMessage() {
  frame_.Run("LoadMessage", MemberKind::Method, [&] {
    CurrentHeader();
    dispatch_.Run(
        [](BackEnd& backEnd, MailRequest& request) { return backEnd.LoadMessage(request); });
  });
}

void Server::DeleteMessage() {
  frame_.Run("DeleteMessage", MemberKind::Method, [&] {
    CurrentHeader();
    dispatch_.Run(
        [](BackEnd& backEnd, MailRequest& request) { return backEnd.DeleteMessage(request); });
  });
}

void Server::MoveCopy(const char* member, const std::string& folder, bool copy) {
  Operate(member, [&](BackEnd& backEnd, MailRequest& request) {
    return backEnd.MoveCopyMessage(request, folder, copy);
  });
}

void Server::MoveMessage(const std::string& folderTo) {
  MoveCopy("MoveMessage", folderTo, false);
}
void Server::CopyMessage(const std::string& folderTo) {
  MoveCopy("CopyMessage", folderTo, true);
}

std::string Server::Resolve(const char* member, const std::string& name, bool withAddress) {
  std::string resolved;
  Operate(member, [&](BackEnd& backEnd, MailRequest& request) {
    return backEnd.ResolveName(request, name, withAddress, resolved);
  });
  return resolved;
}

std::string Server::ResolveName(const std::string& tName) {
  return Resolve("ResolveName", tName, false);
}

std::string Server::ResolveNameEx(const std::string& tName) {
  return Resolve("ResolveNameEx", tName, true);
}

void Server::CreateFolder(const std::string& newFolderSpec) {
  Operate("CreateFolder", [&](BackEnd& backEnd, MailRequest& request) {
    return backEnd.CreateFolder(request, newFolderSpec);
  });
}

void Server::DeleteFolder(const std::string& theFolderSpec) {
  Operate("DeleteFolder", [&](BackEnd& backEnd, MailRequest& request) {
    return backEnd.DeleteFolder(request, theFolderSpec);
  });
}

void Server::CopyFolder(const std::string& folderFromSpec, const std::string& folderToSpec,
                        std::int16_t copySubfolders) {
  Operate("CopyFolder", [&](BackEnd& backEnd, MailRequest& request) {
    return backEnd.CopyFolder(request, folderFromSpec, folderToSpec, copySubfolders != kFalse);
  });
}

std::vector<std::string> Server::Folders(const char* member, const std::string& parent,
                                         std::int16_t returnSpecs, std::int16_t allCategories) {
  std::vector<std::string> folders;
  Operate(member, [&](BackEnd& backEnd, MailRequest& request) {
    return backEnd.GetFolderList(request, parent, returnSpecs != kFalse, allCategories != kFalse,
                                 folders);
  });
  return folders;
}

std::vector<std::string> Server::GetFolderList(const std::string& parentFolderSpec,
                                               std::int16_t returnSpecs,
                                               std::int16_t allCategories) {
  return Folders("GetFolderList", parentFolderSpec, returnSpecs, allCategories);
}

std::string Server::GetFolderListString(const std::string& parentFolderSpec,
                                        std::int16_t returnSpecs, const std::string& stringDelim,
                                        std::int16_t allCategories, std::int32_t& folderCount) {
  const auto folders = Folders("GetFolderListString", parentFolderSpec, returnSpecs, allCategories);
  folderCount = static_cast<std::int32_t>(folders.size());
  return Join(folders, stringDelim);
}

std::vector<std::string> Server::FolderList(const std::string& parentFolderSpec,
                                            std::int16_t returnSpecs, std::int16_t) {
  return Folders("FolderList", parentFolderSpec, returnSpecs, kFalse);
}

ShortBool Server::FolderExists(const std::string& theFolderSpec) {
  bool exists = false;
  Operate("FolderExists", [&](BackEnd& backEnd, MailRequest& request) {
    return backEnd.FolderExists(request, theFolderSpec, exists);
  });
  return ToShortBool(exists);
}

void Server::AsynchObjectRegister(std::shared_ptr<NotificationObject> asynchObject,
                                  std::int32_t objectType, std::int32_t config) {
  frame_.Run("AsynchObjectRegister", MemberKind::Method, [&] {
    if (objectType != 0) {
      throw ServerError(error_code::kRegistration, "Object type not supported.");
    }
    if (config != 0 && config != 1) {
      throw ServerError(error_code::kRegistration, "Configuration parameter not supported.");
    }
    if (asynchObject == nullptr) throw ServerError(error_code::kRegistration);
    environment_.notifier.Register(
        std::move(asynchObject),
        config == 0 ? AsynchNotifier::Configuration::EndsOnly : AsynchNotifier::Configuration::All);
  });
}

void Server::AsynchObjectUnregister(std::int32_t) {
  frame_.Run("AsynchObjectUnregister", MemberKind::Method,
             [&] { environment_.notifier.Unregister(); });
}

void Server::AsynchAbort() {
  frame_.Run("AsynchAbort", MemberKind::Method, [&] {
    auto& notifier = environment_.notifier;
    if (!notifier.Registered()) throw ServerError(error_code::kNotRegistered);
    notifier.SetInProgress();
    environment_.mailSystems.AsynchAbort();
    auto event = notifier.ProcessRecord();
    event.kind = asynch_kind::kEndOfProcess;
    event.result = error_code::kProcessAborted;
    event.text = "Process aborted.";
    event.tag = "AAP1";
    notifier.Post(event);
    event.operation = asynch_operation::kAbort;
    event.result = kBackEndSuccess;
    event.text = "Asynchronous abort was successful.";
    event.tag = "AAP2";
    notifier.Post(event);
  });
}

std::string Server::GetInterfaceString(std::int16_t itemType) {
  return frame_.Run("GetInterfaceString", MemberKind::Method, [&]() -> std::string {
    auto* const system = environment_.mailSystems.Find(state_.mailSystem);
    auto library = system != nullptr ? system->Library() : std::string();
    switch (itemType) {
      case kInterfaceKeyword:
        return MailSystemKeyword(state_.mailSystem);
      case kInterfaceFile:
        return library;
      case kInterfaceKind: {
        const int kind = system != nullptr ? system->Kind() : 0;
        return kind != 0 ? std::to_string(kind) : std::string();
      }
      case kInterfaceLibrary:
        break;
      default:
        throw ServerError(error_code::kInvalidValue, "Invalid parameter.");
    }
    if (state_.mailSystem == mail_system::kNone) return {};
    if (library.empty()) return std::string(kOwnMaker) + " " + environment_.product.fileVersion;
    const auto info = environment_.workstation.DescribeLibrary(library);
    return info ? TrimmedCopy(info->maker + " " + info->fileVersion) : std::string();
  });
}

DecodedError Server::DecodeError(std::int32_t errNumberIn) {
  return frame_.Run("DecodeError", MemberKind::Method, [&] {
    const std::int64_t base = static_cast<std::int32_t>(kErrorNumberBase);
    const auto origin = OriginOfCode(static_cast<std::int64_t>(errNumberIn) - base);
    DecodedError decoded;
    decoded.mailSystem = origin.system;
    decoded.message =
        environment_.mailSystems.MailErrorText(decoded.mailSystem, origin.interfaceError);
    return decoded;
  });
}

void Server::WithAddressBooks(const char* member, MemberKind kind, const AddressBookCall& call) {
  frame_.Run(member, kind, [&] {
    environment_.busy.Pass();
    dispatch_.EnsureSystem(error_code::kAddressBookNoSystem);
    auto* const backEnd = dispatch_.BackEndOrNull();
    auto* const books = backEnd != nullptr ? backEnd->Books() : nullptr;
    if (books == nullptr) throw ServerError(error_code::kNoAddressBook);
    dispatch_.Run([&](BackEnd&, MailRequest& request) { return call(*books, request); });
  });
}

AutomationObjectPtr Server::ObjectOf(const char* member, AutomationObjectPtr (BackEnd::*object)()) {
  return frame_.Run(member, MemberKind::Property, [&] {
    AutomationObjectPtr found;
    dispatch_.Run([&](BackEnd& backEnd, MailRequest&) {
      found = (backEnd.*object)();
      return MailResult();
    });
    return found;
  });
}

AutomationObjectPtr Server::SessionObject() {
  return ObjectOf("SessionObject", &BackEnd::SessionObject);
}

AutomationObjectPtr Server::MessageObject() {
  return ObjectOf("MessageObject", &BackEnd::MessageObject);
}

AutomationObjectPtr Server::FolderObject() {
  return ObjectOf("FolderObject", &BackEnd::FolderObject);
}

void Server::PutSessionObject(const AutomationObjectPtr& session) {
  frame_.Run("SessionObject", MemberKind::Property, [&] {
    dispatch_.Run([&](BackEnd& backEnd, MailRequest&) {
      backEnd.SetSessionObject(session);
      return MailResult();
    });
  });
}

}  // namespace quillon
