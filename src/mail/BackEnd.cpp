#include "mail/BackEnd.h"

#include "core/ErrorCode.h"

namespace quillon {

namespace {

[[noreturn]] void Unsupported() {
  throw ServerError(error_code::kNotSupported);
}

}  // namespace

MailResult BackEnd::Login(MailRequest&) {
  Unsupported();
}
MailResult BackEnd::Logout(MailRequest&) {
  Unsupported();
}
MailResult BackEnd::Send(MailRequest&) {
  Unsupported();
}
MailResult BackEnd::LoadMessageHeaders(MailRequest&) {
  Unsupported();
}
MailResult BackEnd::LoadMessageIdentifiers(MailRequest&) {
  Unsupported();
}
MailResult BackEnd::LoadMessage(MailRequest&) {
  Unsupported();
}
MailResult BackEnd::DeleteMessage(MailRequest&) {
  Unsupported();
}
MailResult BackEnd::MoveCopyMessage(MailRequest&, const std::string&, bool) {
  Unsupported();
}
MailResult BackEnd::UnreadCount(MailRequest&, std::int32_t&) {
  Unsupported();
}
MailResult BackEnd::ResolveName(MailRequest&, const std::string&, bool, std::string&) {
  Unsupported();
}
MailResult BackEnd::GetSessionHandle(MailRequest&, std::int32_t&) {
  return {};
}
MailResult BackEnd::SetSessionHandle(MailRequest&, std::int32_t) {
  Unsupported();
}
MailResult BackEnd::CreateFolder(MailRequest&, const std::string&) {
  Unsupported();
}
MailResult BackEnd::DeleteFolder(MailRequest&, const std::string&) {
  Unsupported();
}
MailResult BackEnd::CopyFolder(MailRequest&, const std::string&, const std::string&, bool) {
  Unsupported();
}
MailResult BackEnd::GetFolderList(MailRequest&, const std::string&, bool, bool,
                                  std::vector<std::string>&) {
  Unsupported();
}
MailResult BackEnd::FolderExists(MailRequest&, const std::string&, bool&) {
  Unsupported();
}
MailResult BackEnd::Post(MailRequest&) {
  Unsupported();
}

AutomationObjectPtr BackEnd::SessionObject() {
  Unsupported();
}
void BackEnd::SetSessionObject(const AutomationObjectPtr&) {
  Unsupported();
}
AutomationObjectPtr BackEnd::MessageObject() {
  Unsupported();
}
AutomationObjectPtr BackEnd::FolderObject() {
  Unsupported();
}

void BackEnd::SetErrorDisplay(bool) {}
void BackEnd::Shutdown(std::int32_t) {}

}  // namespace quillon
