#include "backends/vim/VimSessions.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "backends/LogonPrompt.h"
#include "backends/vim/VimFailure.h"
#include "backends/vim/VimLocation.h"
#include "core/ErrorCode.h"
#include "core/ServerError.h"

namespace quillon {

namespace {

constexpr const char* kLogonFailed = "Failed to Logon to mail system (VIMOpenSession)";
constexpr const char* kNoContainer = "Failed to open message container (VIMOpenMessageContainer)";

// What a library says that cannot be asked for its maker. It may send and receive all the same.
bool IsUnknownCapability(vim::Status status) {
  return status == vim::kInvalidSelector || status == vim::kNotSupported ||
         status == vim::kNoSuchAttribute;
}

}  // namespace

vim::Handle VimSessions::HandleOf(const InstanceState& instance) {
  return static_cast<vim::Handle>(instance.session.handle);
}

void VimSessions::Initialize() {
  if (initialized_) return;
  CheckVim(ports_.library.Initialize(LocateVim(ports_.workstation).directory),
           "Error initializing VIM (VIMInitialize)");
  initialized_ = true;
}

void VimSessions::QueryProduct() {
  product_ = 0;
  const auto status = ports_.library.QueryCapability(vim::kProduct, product_);
  if (!IsUnknownCapability(status)) CheckVim(status, kLogonFailed);
}

void VimSessions::Open(MailRequest& request) {
  auto& instance = request.instance;
  if (!instance.session.loggedIn) {
    const auto handle = LogOn(request);
    sessions_[handle] = {++count_, true, 0, {}, {}};
    instance.session = {static_cast<std::int32_t>(handle), true, false};
  } else if (!sessions_.contains(HandleOf(instance))) {
    Initialize();
    sessions_[HandleOf(instance)] = {++count_, false, 0, {}, {}};
  }
}

void VimSessions::OpenOnDemand(MailRequest& request) {
  if (!request.instance.session.loggedIn) request.instance.loginDialog = kTrue;
  Open(request);
}

vim::Handle VimSessions::LogOn(MailRequest& request) {
  auto& instance = request.instance;
  CheckPostOffice(instance);
  Initialize();
  VimLogin defaults;
  const auto status = ports_.library.GetDefaultSessionInfo(defaults.path, defaults.name);
  if (status != vim::kNoDefault) CheckVim(status, kLogonFailed);
  QueryProduct();
  // The session of the mail program is shared where there is one.
  vim::Handle handle = 0;
  if (ports_.library.OpenSession(std::nullopt, handle) != vim::kSuccess) {
    const auto login = LoginData(request, std::move(defaults));
    CheckVim(ports_.library.OpenSession(login, handle), kLogonFailed);
  }
  return handle;
}

void VimSessions::CheckPostOffice(const InstanceState& instance) const {
  if (!instance.postOffice.empty() && !ports_.files.DirectoryExists(instance.postOffice)) {
    throw ServerError(error_code::kNoPostOffice);
  }
}

VimLogin VimSessions::LoginData(MailRequest& request, VimLogin defaults) {
  auto& instance = request.instance;
  auto login = std::move(defaults);
  if (!instance.postOffice.empty()) login.path = instance.postOffice;
  if (!instance.loginName.empty()) login.name = instance.loginName;
  login.password = instance.password;
  if (!login.name.empty() && !login.password.empty()) return login;
  if (instance.loginDialog == kFalse) throw ServerError(error_code::kLoginData);
  // What is not the client's is only proposed.
  auto asked = instance;
  asked.postOffice = login.path;
  asked.loginName = login.name;
  MailRequest question{asked, request.shared};
  AskForLogon(ports_.loginPrompt,
              {.caption = "VIM Login",
               .server = login_label::kPostOffice,
               .name = login_label::kUser,
               .password = login_label::kPassword},
              question);
  if (asked.postOffice != login.path) {
    CheckPostOffice(asked);
    login.path = instance.postOffice = asked.postOffice;
  }
  login.name = instance.loginName = asked.loginName;
  login.password = instance.password = asked.password;
  return login;
}

void VimSessions::Close(InstanceState& instance) {
  const auto found = sessions_.find(HandleOf(instance));
  if (found != sessions_.end() && (!found->second.isOurs || !instance.session.isClients)) {
    CloseBooks(found->second);
    CloseContainer(found->second);
    if (found->second.isOurs) CheckVim(ports_.library.CloseSession(found->first));
    sessions_.erase(found);
  }
  instance.session = {};
}

// Whatever comes of it, the container is not used again.
void VimSessions::CloseContainer(Session& session) {
  const auto container = std::exchange(session.container, 0);
  if (container != 0) CheckVim(ports_.library.CloseMessageContainer(container));
}

void VimSessions::CloseBooks(Session& session) {
  for (const auto book : std::exchange(session.books, {})) ports_.library.CloseAddressBook(book);
}

void VimSessions::ForgetClients(vim::Handle handle) {
  const auto found = sessions_.find(handle);
  if (found == sessions_.end() || found->second.isOurs) return;
  CloseBooks(found->second);
  if (found->second.container != 0) {
    ports_.library.CloseMessageContainer(found->second.container);
  }
  sessions_.erase(found);
}

void VimSessions::Change(const InstanceState& instance, std::int32_t handle) {
  ForgetClients(HandleOf(instance));
  ForgetClients(static_cast<vim::Handle>(handle));
}

void VimSessions::End() {
  for (auto& [handle, session] : std::exchange(sessions_, {})) {
    CloseBooks(session);
    if (session.container != 0) ports_.library.CloseMessageContainer(session.container);
    if (session.isOurs) ports_.library.CloseSession(handle);
  }
  if (std::exchange(initialized_, false)) ports_.library.Terminate();
}

vim::Handle VimSessions::Container(const InstanceState& instance, const std::string& name) {
  auto& session = sessions_.at(HandleOf(instance));
  if (session.container != 0 && session.containerName == name) return session.container;
  CloseContainer(session);
  CheckVim(ports_.library.OpenMessageContainer(HandleOf(instance), name, session.container),
           kNoContainer);
  session.containerName = name;
  return session.container;
}

vim::Handle VimSessions::OpenBook(const InstanceState& instance, const std::string& name) {
  auto& session = sessions_.at(HandleOf(instance));
  vim::Handle book = 0;
  CheckVim(ports_.library.OpenAddressBook(HandleOf(instance), name, book));
  session.books.push_back(book);
  return book;
}

void VimSessions::CloseBook(std::uint64_t sessionNumber, vim::Handle book) {
  for (auto& [handle, session] : sessions_) {
    if (session.number != sessionNumber) continue;
    if (std::erase(session.books, book) != 0) ports_.library.CloseAddressBook(book);
  }
}

bool VimSessions::HasBook(std::uint64_t sessionNumber, vim::Handle book) const {
  return std::any_of(sessions_.begin(), sessions_.end(), [&](const auto& each) {
    const auto& books = each.second.books;
    return each.second.number == sessionNumber &&
           std::find(books.begin(), books.end(), book) != books.end();
  });
}

std::uint64_t VimSessions::NumberOf(const InstanceState& instance) const {
  const auto found = sessions_.find(HandleOf(instance));
  return found != sessions_.end() && instance.session.loggedIn ? found->second.number : 0;
}

}  // namespace quillon
