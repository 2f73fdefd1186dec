#include "mail/BackEnd.h"

namespace quillon {

namespace {

[[noreturn]] void Unsupported() {
  throw ServerError(530);
}

}  // namespace

std::int32_t BackEnd::Login(MailRequest&) {
  Unsupported();
}
std::int32_t BackEnd::Logout(MailRequest&) {
  Unsupported();
}
std::int32_t BackEnd::Send(MailRequest&) {
  Unsupported();
}
std::int32_t BackEnd::LoadMessageHeaders(MailRequest&) {
  Unsupported();
}
std::int32_t BackEnd::LoadMessageIdentifiers(MailRequest&) {
  Unsupported();
}
std::int32_t BackEnd::LoadMessage(MailRequest&) {
  Unsupported();
}
std::int32_t BackEnd::DeleteMessage(MailRequest&) {
  Unsupported();
}
std::int32_t BackEnd::MoveCopyMessage(MailRequest&, const std::string&, bool) {
  Unsupported();
}
std::int32_t BackEnd::UnreadCount(MailRequest&, std::int32_t&) {
  Unsupported();
}
std::int32_t BackEnd::ResolveName(MailRequest&, const std::string&, bool, std::string&) {
  Unsupported();
}
std::int32_t BackEnd::GetSessionHandle(MailRequest&, std::int32_t&) {
  Unsupported();
}
std::int32_t BackEnd::SetSessionHandle(MailRequest&, std::int32_t) {
  Unsupported();
}
std::int32_t BackEnd::CreateFolder(MailRequest&, const std::string&) {
  Unsupported();
}
std::int32_t BackEnd::DeleteFolder(MailRequest&, const std::string&) {
  Unsupported();
}
std::int32_t BackEnd::CopyFolder(MailRequest&, const std::string&, const std::string&, bool) {
  Unsupported();
}
std::int32_t BackEnd::GetFolderList(MailRequest&, const std::string&, bool, bool,
                                    std::vector<std::string>&) {
  Unsupported();
}
std::int32_t BackEnd::FolderExists(MailRequest&, const std::string&, bool&) {
  Unsupported();
}
std::int32_t BackEnd::Post(MailRequest&) {
  Unsupported();
}

void BackEnd::SetErrorDisplay(bool) {}
void BackEnd::Shutdown(std::int32_t) {}

}  // namespace quillon
