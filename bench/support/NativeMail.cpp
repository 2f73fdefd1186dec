#include "bench/support/NativeMail.h"

#include <stdexcept>

#include "core/BackgroundThread.h"
#include "core/WholeFile.h"

namespace quillon::bench {

NativeMail::NativeMail(const std::string& directory, std::uint16_t smtpPort, std::uint16_t popPort)
    : configuration_(*files_, directory + "/quillon.ini"),
      log_(*files_, directory),
      fetched_(*files_, *crypto_, directory),
      backEnd_({*loop_,
                *loop_,
                {*tls_, *crypto_, tokens_, RunInBackground},
                *files_,
                *codePage_,
                *characterSets_,
                *characterEncoder_,
                *clock_,
                loginPrompt_,
                messageBox_,
                configuration_,
                servers_,
                fetched_,
                log_,
                notifier_,
                progress_},
               {"1.0", {}}) {
  instance_.mailSystem = mail_system::kInternet;
  instance_.smtpServer = instance_.postOffice = "127.0.0.1";
  instance_.loginName = "bench";
  instance_.password = "bench";
  shared_.internet.smtpPort = smtpPort;
  shared_.internet.popPort = popPort;
}

void NativeMail::SetMessage(const std::string& sender, const std::string& recipient,
                            const std::string& body) {
  shared_.message.from = sender;
  shared_.message.to = {recipient};
  shared_.message.subject = "A small message";
  shared_.message.body = body;
}

void NativeMail::SetAttachment(const std::string& path) {
  shared_.message.attachments = {{path, std::string(FileNameOf(path))}};
}

void NativeMail::SetMaximumHeaders(std::size_t count) {
  instance_.maximumHeaders = static_cast<std::int32_t>(count);
}

void NativeMail::UseExtensions(bool tls) {
  auto& access = instance_.access;
  access.extensions = kTrue;
  if (tls) access.smtpSecurity = access.popSecurity = 3;
}

void NativeMail::Login() {
  Check("Login", backEnd_.Login(request_));
}

void NativeMail::Connect() {
  instance_.mailSystem = mail_system::kSmtp;
  Logout();
  Login();
}

void NativeMail::Logout() {
  Check("Logout", backEnd_.Logout(request_));
}

void NativeMail::Send() {
  Check("Send", backEnd_.Send(request_));
}

std::size_t NativeMail::LoadMessageHeaders() {
  Check("LoadMessageHeaders", backEnd_.LoadMessageHeaders(request_));
  return shared_.headers.size();
}

std::size_t NativeMail::LoadMessage(const std::string& directory) {
  instance_.attachmentDirectory = directory;
  Check("LoadMessage", backEnd_.LoadMessage(request_));
  return shared_.message.attachments.size();
}

void NativeMail::Check(const char* operation, const MailResult& result) {
  if (result.Succeeded()) return;
  throw std::runtime_error(std::string(operation) + " fails with " + std::to_string(result.number));
}

}  // namespace quillon::bench
