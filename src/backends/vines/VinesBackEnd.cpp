#include "backends/vines/VinesBackEnd.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "backends/FolderPath.h"
#include "backends/LogonPrompt.h"
#include "backends/OutgoingFiles.h"
#include "backends/vines/VinesErrorText.h"
#include "backends/vines/VinesMessage.h"
#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "mail/ReceivedFiles.h"

namespace quillon {

namespace {

constexpr const char* kTitle = "VINES Mail Error";
constexpr auto kMostUnread = std::uint32_t{std::numeric_limits<std::int32_t>::max()};

// Throws ServerError 529 for a path with an empty name in it.
ProviderFolder FolderOf(const MailRequest& request, const std::string& path) {
  auto names = SplitFolderPath(path, request.instance.folderDelimiter);
  if (!names) throw ServerError(error_code::kInvalidValue, "Invalid folder.");
  return std::move(*names);
}

}  // namespace

VinesBackEnd::VinesBackEnd(const VinesPorts& ports)
    : ports_(ports),
      provider_(ports.library.Provider()),
      diagnostic_(ports.messageBox, kTitle, VinesErrorText),
      books_(provider_, [this](MailRequest& request, const char* context,
                               const std::function<std::int32_t()>& call) {
        auto result = LoginOnDemand(request);
        return result.Succeeded() ? ResultOf(request, context, call()) : result;
      }) {}

MailResult VinesBackEnd::ResultOf(const MailRequest& request, const char* context,
                                  std::int32_t number) const {
  if (number == provider::kSuccess) return {};
  // A number of the library's that would be a success here.
  if (number == kBackEndSuccess) number = provider::kBadData;
  return diagnostic_.Fail(request, context, number, ports_.library.TextOf(number));
}

MailResult VinesBackEnd::Login(MailRequest& request) {
  constexpr const char* kContext = "Failed to log in (Login)";
  auto& instance = request.instance;
  if (instance.session.loggedIn) return {};
  auto result = ResultOf(request, kContext, ports_.library.Load());
  if (!result.Succeeded()) return result;
  const bool native = instance.nativeMailDialog != kFalse;
  const bool dialog = instance.loginDialog != kFalse;
  if (dialog && !native && (instance.loginName.empty() || instance.password.empty())) {
    instance.session = {};
    AskForLogon(
        ports_.loginPrompt,
        {.caption = "VINES Login", .name = login_label::kUser, .password = login_label::kPassword},
        request);
  }
  std::int32_t session = 0;
  const auto number =
      provider_.Login({0, request.shared.ownerWindow},
                      {instance.loginName, instance.password, instance.postOffice, instance.profile,
                       native && dialog, instance.forceDownload != kFalse},
                      session);
  result = ResultOf(request, kContext, number);
  if (!result.Succeeded()) return result;
  open_.insert(session);
  instance.session = {session, true, false};
  return {};
}

MailResult VinesBackEnd::LoginOnDemand(MailRequest& request) {
  if (request.instance.session.loggedIn) return {};
  request.instance.loginDialog = kTrue;
  return Login(request);
}

MailResult VinesBackEnd::Logout(MailRequest& request) {
  auto& session = request.instance.session;
  if (session.loggedIn && !session.isClients) {
    auto result =
        ResultOf(request, "Failed to log out (Logout)", provider_.Logout(VinesCallOf(request)));
    if (!result.Succeeded()) return result;
    open_.erase(session.handle);
  }
  session = {};
  return {};
}

MailResult VinesBackEnd::Send(MailRequest& request) {
  auto result = LoginOnDemand(request);
  if (!result.Succeeded()) return result;
  const OutgoingFiles files(ports_.files, request);
  const auto message = VinesMessageOf(request, ports_.files, files);
  return ResultOf(request, "Error sending mail (Send)",
                  provider_.Send(VinesCallOf(request), message));
}

MailResult VinesBackEnd::LoadMessageHeaders(MailRequest& request) {
  auto result = LoginOnDemand(request);
  if (!result.Succeeded()) return result;
  HeaderTable table;
  // What has been read before a failure stays; the client hears of it.
  result = List(request, table);
  request.shared.headers = std::move(table);
  request.shared.headerOrigin = {VinesMailboxOf(request.instance), 0};
  return result;
}

MailResult VinesBackEnd::List(const MailRequest& request, HeaderTable& table) {
  const auto& instance = request.instance;
  const auto most = static_cast<std::size_t>(std::max(instance.maximumHeaders, 0));
  const bool unreadOnly = instance.unreadOnly != kFalse;
  const ProviderListing listing{FolderOf(request, instance.folder),
                                static_cast<std::uint32_t>(most), unreadOnly,
                                instance.dateSort != kFalse};
  if (most == 0) return {};
  const auto found = [&](ProviderHeader header) {
    if (unreadOnly && !header.unread) return true;
    auto record = VinesHeaderOf(std::move(header), instance.dateFormat);
    record.number = std::to_string(table.size() + 1);
    table.push_back(std::move(record));
    return table.size() < most;
  };
  return ResultOf(request, "Error getting mail headers (List)",
                  provider_.List(VinesCallOf(request), listing, found));
}

MailResult VinesBackEnd::UnreadCount(MailRequest& request, std::int32_t& count) {
  auto result = LoginOnDemand(request);
  if (!result.Succeeded()) return result;
  std::uint32_t unread = 0;
  result = ResultOf(request, "Error counting unread messages (UnreadCount)",
                    provider_.UnreadCount(VinesCallOf(request),
                                          FolderOf(request, request.instance.folder), unread));
  if (result.Succeeded()) count = static_cast<std::int32_t>(std::min(unread, kMostUnread));
  return result;
}

MailResult VinesBackEnd::LoadMessage(MailRequest& request) {
  auto result = LoginOnDemand(request);
  if (!result.Succeeded()) return result;
  const bool withoutFiles = request.instance.suppressAttachments != kFalse;
  const ProviderReading reading{CurrentVinesMessage(request), request.instance.peekOnly != kFalse,
                                withoutFiles};
  ReceivedFiles received(ports_.files, request);
  ProviderMessage message;
  const auto read = provider_.Read(VinesCallOf(request), reading, message,
                                   [&](const std::string& name) { return received.NewFile(name); });
  result = ResultOf(request, "Error getting mail message (Read)", read);
  if (result.Succeeded()) TakeVinesMessage(request, std::move(message), received);
  return result;
}

MailResult VinesBackEnd::DeleteMessage(MailRequest& request) {
  auto result = LoginOnDemand(request);
  if (!result.Succeeded()) return result;
  return ResultOf(request, "Error deleting mail message (Delete)",
                  provider_.Delete(VinesCallOf(request), CurrentVinesMessage(request)));
}

MailResult VinesBackEnd::MoveCopyMessage(MailRequest& request, const std::string& folder,
                                         bool copy) {
  if (copy) throw ServerError(error_code::kNotSupported);
  auto result = LoginOnDemand(request);
  if (!result.Succeeded()) return result;
  return ResultOf(request, "Error moving mail message (Move)",
                  provider_.Move(VinesCallOf(request), CurrentVinesMessage(request),
                                 FolderOf(request, folder)));
}

// A library that cannot be asked fails with the first operation.
AddressBooks* VinesBackEnd::Books() {
  const bool isKnown = ports_.library.Load() == provider::kSuccess;
  const bool hasBooks = provider_.HasAddressBooks() || provider_.HasAddressWindow();
  return isKnown && !hasBooks ? nullptr : &books_;
}

// The session may have another number by now, or have ended by itself.
MailResult VinesBackEnd::GetSessionHandle(MailRequest& request, std::int32_t& handle) {
  auto& session = request.instance.session;
  if (!session.loggedIn) return {};
  const auto before = session.handle;
  auto now = before;
  const auto number = provider_.GetSession(VinesCallOf(request), now);
  if (number == provider::kNotSupported) return {};
  auto result = ResultOf(request, "Error getting session (GetSession)", number);
  if (!result.Succeeded() || now == before) return result;
  const bool isOurs = open_.erase(before) != 0;
  if (now == 0) {
    session = {};
  } else if (isOurs) {
    open_.insert(now);
  }
  handle = now;
  return {};
}

MailResult VinesBackEnd::SetSessionHandle(MailRequest& request, std::int32_t handle) {
  if (handle == 0) return {};
  constexpr const char* kContext = "Error setting session (SetSession)";
  auto result = ResultOf(request, kContext, ports_.library.Load());
  if (!result.Succeeded()) return result;
  return ResultOf(request, kContext, provider_.SetSession({handle, request.shared.ownerWindow}));
}

// The handle of the last Server is one of those that are open, or a client's, who ends it himself.
void VinesBackEnd::Shutdown(std::int32_t) {
  for (const auto session : std::exchange(open_, {})) provider_.Logout({session, 0});
}

}  // namespace quillon
