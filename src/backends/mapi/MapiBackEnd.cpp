#include "backends/mapi/MapiBackEnd.h"

#include <exception>
#include <utility>
#include <vector>

#include "backends/LogonPrompt.h"
#include "backends/OutgoingFiles.h"
#include "backends/RecipientParts.h"
#include "backends/mapi/MapiErrorText.h"
#include "backends/mapi/MapiHeader.h"
#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "mail/OutgoingText.h"

namespace quillon {

namespace {

constexpr const char* kTitle = "MAPI Mail Error";
constexpr const char* kConfigurationSection = "MAPI";
constexpr const char* kNewSessionKey = "NewSession";
constexpr std::int32_t kMostUnread = 1000;

// The session of the call, and the window its dialogs belong to.
std::uint32_t SessionOf(const MailRequest& request) {
  return static_cast<std::uint32_t>(request.instance.session.handle);
}
std::uint32_t WindowOf(const MailRequest& request) {
  return static_cast<std::uint32_t>(request.shared.ownerWindow);
}

}  // namespace

MapiBackEnd::MapiBackEnd(const MapiPorts& ports)
    : ports_(ports),
      diagnostic_(ports.messageBox, kTitle, MapiErrorText),
      books_(ports.library, diagnostic_,
             [this](MailRequest& request) { return LoginOnDemand(request); }) {}

MailResult MapiBackEnd::Fail(const MailRequest& request, const char* context,
                             std::uint32_t number) const {
  return diagnostic_.Fail(request, context, static_cast<std::int32_t>(number));
}

MailResult MapiBackEnd::Login(MailRequest& request) {
  auto& instance = request.instance;
  if (instance.session.loggedIn) return {};
  std::uint32_t flags = 0;
  if (instance.forceDownload != kFalse) flags |= mapi::kForceDownload;
  if (ports_.configuration.ReadTrueFalse(kConfigurationSection, kNewSessionKey, false)) {
    flags |= mapi::kNewSession;
  }
  if (instance.nativeMailDialog != kFalse) {
    if (instance.loginDialog != kFalse) flags |= mapi::kLogonUi;
  } else if (instance.loginDialog != kFalse &&
             (instance.loginName.empty() || instance.password.empty())) {
    instance.session = {};
    AskForLogon(ports_.loginPrompt,
                {.caption = "MAPI Login",
                 .name = login_label::kProfile,
                 .password = login_label::kPassword},
                request);
  }
  std::uint32_t session = 0;
  const auto result = ports_.library.Logon(WindowOf(request), instance.loginName, instance.password,
                                           flags, session);
  if (result != mapi::kSuccess) {
    return Fail(request, "Failed to Logon to mail system (MAPILogon)", result);
  }
  open_.insert(session);
  instance.session = {static_cast<std::int32_t>(session), true, false};
  return {};
}

MailResult MapiBackEnd::LoginOnDemand(MailRequest& request) {
  if (request.instance.session.loggedIn) return {};
  request.instance.loginDialog = kTrue;
  return Login(request);
}

MailResult MapiBackEnd::Logout(MailRequest& request) {
  auto& session = request.instance.session;
  if (session.handle != 0 && session.loggedIn && !session.isClients) {
    const auto result = ports_.library.Logoff(SessionOf(request), WindowOf(request));
    if (result != mapi::kSuccess) return Fail(request, "Failed to logoff (MAPILogoff)", result);
    open_.erase(SessionOf(request));
  }
  session = {};
  return {};
}

MailResult MapiBackEnd::Send(MailRequest& request) {
  try {
    return SendMessage(request);
  } catch (const ServerError&) {
    throw;
  } catch (const std::exception& error) {
    diagnostic_.Show(request, std::string("MAPISendMailQLNHandler: ") + error.what(), 0);
    throw;
  }
}

MailResult MapiBackEnd::SendMessage(MailRequest& request) {
  const auto& source = request.shared.message;
  const bool dialog = request.instance.nativeMailDialog != kFalse;
  if (!dialog && source.to.empty()) return {0, {}};
  auto result = LoginOnDemand(request);
  MapiMessage message;
  if (result.Succeeded()) result = AddRecipients(request, source.to, mapi::kTo, message);
  if (result.Succeeded()) result = AddRecipients(request, source.cc, mapi::kCc, message);
  if (result.Succeeded()) result = AddRecipients(request, source.bcc, mapi::kBcc, message);
  if (!result.Succeeded()) return result;
  const OutgoingFiles files(ports_.files, request);
  for (const auto& file : files.List()) {
    // The library's own directory need not be this program's.
    message.files.push_back({0, -1, ports_.files.FullPath(file.file), file.displayName});
  }
  message.subject = source.subject;
  message.noteText = OutgoingText(source);
  message.messageType = request.instance.messageType;
  if (source.certify != kFalse) message.flags = mapi::kReceiptRequested;
  auto& library = ports_.library;
  const auto sent =
      dialog ? library.SendMailInDialog(SessionOf(request), WindowOf(request), message,
                                        mapi::kLogonUi | mapi::kDialog)
             : library.SendMail(SessionOf(request), WindowOf(request), message, mapi::kLogonUi);
  if (sent == mapi::kSuccess) return {};
  if (dialog && sent == mapi::kUserAbort) {
    return {static_cast<std::int32_t>(sent), MapiErrorText(mapi::kUserAbort)};
  }
  return Fail(request, "Error sending mail (MAPISendMail)", sent);
}

MailResult MapiBackEnd::AddRecipients(const MailRequest& request,
                                      const std::vector<std::string>& list,
                                      std::uint32_t recipientClass, MapiMessage& message) {
  for (const auto& text : list) {
    auto [name, address] = SplitRecipient(text);
    MapiRecipient recipient{recipientClass, std::move(name), std::move(address), {}};
    if (request.instance.nameResolution != kFalse) {
      const auto result =
          ports_.library.ResolveName(SessionOf(request), WindowOf(request), text,
                                     mapi::kDialog | mapi::kAddressBookNoModify, recipient);
      if (result != mapi::kSuccess) {
        return Fail(request, "Error resolving name (MAPIResolveName)", result);
      }
      recipient.recipientClass = recipientClass;
    }
    message.recipients.push_back(std::move(recipient));
  }
  return {};
}

MailResult MapiBackEnd::LoadMessageHeaders(MailRequest& request) {
  auto result = LoginOnDemand(request);
  if (!result.Succeeded()) return result;
  HeaderTable table;
  const auto& instance = request.instance;
  // What has been read before a failure stays; the client hears of it.
  result = List(request, {table, instance.messageType, instance.unreadOnly != kFalse,
                          instance.maximumHeaders});
  request.shared.headers = std::move(table);
  request.shared.headerOrigin = {MapiMailboxOf(instance), 0};
  return result;
}

MailResult MapiBackEnd::List(const MailRequest& request, const Listing& wanted) {
  const auto flags =
      mapi::kGuaranteeFifo | (wanted.unreadOnly ? mapi::kUnreadOnly : std::uint32_t{0});
  std::string id;
  while (wanted.table.size() < static_cast<std::size_t>(wanted.most)) {
    const auto seed = std::exchange(id, {});
    const auto found = ports_.library.FindNext(SessionOf(request), WindowOf(request),
                                               wanted.messageType, seed, flags, id);
    if (found == mapi::kNoMessages) return {};
    if (found != mapi::kSuccess) {
      return Fail(request, "Error getting mail headers (MAPIFindNext)", found);
    }
    auto result = AddHeader(request, wanted, id);
    if (!result.Succeeded()) return result;
  }
  return {};
}

MailResult MapiBackEnd::AddHeader(const MailRequest& request, const Listing& wanted,
                                  const std::string& id) {
  MapiMessage envelope;
  const auto result = ports_.library.ReadEnvelope(SessionOf(request), WindowOf(request), id,
                                                  mapi::kEnvelopeOnly | mapi::kPeek, envelope);
  if (result != mapi::kSuccess) {
    return Fail(request, "Error getting mail headers (MAPIReadMail)", result);
  }
  auto record = HeaderOf(envelope, request.instance);
  record.number = std::to_string(wanted.table.size() + 1);
  record.uniqueId = id;
  record.contentType = wanted.messageType;
  wanted.table.push_back(std::move(record));
  return {};
}

MailResult MapiBackEnd::UnreadCount(MailRequest& request, std::int32_t& count) {
  auto result = LoginOnDemand(request);
  if (!result.Succeeded()) return result;
  HeaderTable table;
  result = List(request, {table, {}, true, kMostUnread});
  count = static_cast<std::int32_t>(table.size());
  return result;
}

MailResult MapiBackEnd::LoadMessage(MailRequest& request) {
  auto result = LoginOnDemand(request);
  if (!result.Succeeded()) return result;
  const auto& instance = request.instance;
  std::uint32_t flags = 0;
  if (instance.peekOnly != kFalse) flags |= mapi::kPeek;
  if (instance.suppressAttachments != kFalse) flags |= mapi::kSuppressAttach;
  MapiMessage message;
  const auto read = ports_.library.ReadMail(SessionOf(request), WindowOf(request),
                                            CurrentMapiMessage(request), flags, message);
  if (read != mapi::kSuccess) {
    return Fail(request, "Error getting mail message (MAPIReadMailC)", read);
  }
  if (!TakeMapiMessage(ports_.files, request, message)) {
    return Fail(request, "Error getting mail message (MAPIReadMailC)", kAttachmentNotWritten);
  }
  return {};
}

MailResult MapiBackEnd::DeleteMessage(MailRequest& request) {
  auto result = LoginOnDemand(request);
  if (!result.Succeeded()) return result;
  const auto deleted =
      ports_.library.DeleteMail(SessionOf(request), WindowOf(request), CurrentMapiMessage(request));
  if (deleted == mapi::kSuccess) return {};
  return Fail(request, "Error deleting mail message (MAPIDeleteMail)", deleted);
}

MailResult MapiBackEnd::MoveCopyMessage(MailRequest& request, const std::string&, bool copy) {
  const char* const text = copy ? "Cannot copy message with MAPI 0"
                                : "Cannot move message with MAPI 0 (MAPIMoveMessage)";
  diagnostic_.Show(request, text, error_code::kNotSupported);
  throw ServerError(error_code::kNotSupported, text);
}

MailResult MapiBackEnd::ResolveName(MailRequest& request, const std::string& name, bool withAddress,
                                    std::string& resolved) {
  auto result = LoginOnDemand(request);
  if (!result.Succeeded()) return result;
  const bool dialog = request.instance.nativeMailDialog != kFalse;
  auto flags = mapi::kAddressBookNoModify;
  if (dialog) flags |= mapi::kDialog;
  MapiRecipient recipient;
  const auto found =
      ports_.library.ResolveName(SessionOf(request), WindowOf(request), name, flags, recipient);
  if (found != mapi::kSuccess) {
    result = Fail(request, "Error resolving name (MAPIResolveName)", found);
    if (dialog && found == mapi::kUserAbort) {
      result.text = "User selected cancel in ResolveName dialog.";
    }
    return result;
  }
  resolved = withAddress ? recipient.name + " <" + recipient.address + ">" : recipient.name;
  return {};
}

MailResult MapiBackEnd::SetSessionHandle(MailRequest&, std::int32_t) {
  return {};
}

std::optional<std::int32_t> MapiBackEnd::NumberOfCancelledDialog() const {
  return static_cast<std::int32_t>(mapi::kUserAbort);
}

// The handle of the last Server is one of those that are open, or a client's, who ends it himself.
void MapiBackEnd::Shutdown(std::int32_t) {
  for (const auto session : std::exchange(open_, {})) ports_.library.Logoff(session, 0);
}

}  // namespace quillon
