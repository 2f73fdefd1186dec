#include "mail/BackEnd.h"

namespace quillon {

namespace {

[[noreturn]] void unsupported() { throw ServerError(530); }

}  // namespace

std::int32_t BackEnd::login(MailRequest&) { unsupported(); }
std::int32_t BackEnd::logout(MailRequest&) { unsupported(); }
std::int32_t BackEnd::send(MailRequest&) { unsupported(); }
std::int32_t BackEnd::loadMessageHeaders(MailRequest&) { unsupported(); }
std::int32_t BackEnd::loadMessageIdentifiers(MailRequest&) { unsupported(); }
std::int32_t BackEnd::loadMessage(MailRequest&) { unsupported(); }
std::int32_t BackEnd::deleteMessage(MailRequest&) { unsupported(); }
std::int32_t BackEnd::moveCopyMessage(MailRequest&, const std::string&, bool) { unsupported(); }
std::int32_t BackEnd::unreadCount(MailRequest&, std::int32_t&) { unsupported(); }
std::int32_t BackEnd::resolveName(MailRequest&, const std::string&, bool, std::string&) {
  unsupported();
}
std::int32_t BackEnd::getSessionHandle(MailRequest&, std::int32_t&) { unsupported(); }
std::int32_t BackEnd::setSessionHandle(MailRequest&, std::int32_t) { unsupported(); }
std::int32_t BackEnd::createFolder(MailRequest&, const std::string&) { unsupported(); }
std::int32_t BackEnd::deleteFolder(MailRequest&, const std::string&) { unsupported(); }
std::int32_t BackEnd::copyFolder(MailRequest&, const std::string&, const std::string&, bool) {
  unsupported();
}
std::int32_t BackEnd::getFolderList(MailRequest&, const std::string&, bool, bool,
                                    std::vector<std::string>&) {
  unsupported();
}
std::int32_t BackEnd::folderExists(MailRequest&, const std::string&, bool&) { unsupported(); }
std::int32_t BackEnd::post(MailRequest&) { unsupported(); }

void BackEnd::setErrorDisplay(bool) {}
void BackEnd::shutdown(std::int32_t) {}

}  // namespace quillon
