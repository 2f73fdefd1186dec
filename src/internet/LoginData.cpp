#include "internet/LoginData.h"

#include "core/ErrorCode.h"
#include "core/ServerError.h"

namespace quillon {

namespace {

constexpr const char* kConfigurationSection = "Internet";
constexpr const char* kConfigurationKey = "SMTPServer";

}  // namespace

// The user may have changed the file meanwhile.
void LoginData::RememberServer(const std::string& host) {
  if (configuration_.ReadString(kConfigurationSection, kConfigurationKey) == host) return;
  configuration_.WriteString(kConfigurationSection, kConfigurationKey, host);
}

bool LoginData::AskForLogin(const MailRequest& request, const char* caption, LoginFields& fields) {
  if (request.instance.loginDialog == kFalse) return false;
  const auto answer = prompt_.Ask(caption, fields);
  if (answer == LoginPrompt::Answer::Cancelled) {
    throw ServerError(error_code::kUserAborted, "User selected cancel in dialog.");
  }
  return answer == LoginPrompt::Answer::Entered;
}

void LoginData::PreparePop(MailRequest& request) {
  auto& instance = request.instance;
  const auto complete = [&] { return !instance.postOffice.empty() && !instance.loginName.empty(); };
  if (complete()) return;
  LoginFields fields{instance.postOffice, instance.loginName, instance.password};
  if (AskForLogin(request, "POP Login", fields)) {
    instance.postOffice = fields.server;
    instance.loginName = fields.name;
    instance.password = fields.password;
  }
  if (!complete()) throw ServerError(error_code::kLoginData);
}

void LoginData::PrepareSmtp(MailRequest& request) {
  auto& host = request.instance.smtpServer;
  auto& from = request.shared.message.from;
  const auto complete = [&] { return !host.empty() && !from.empty(); };
  if (complete()) return;
  LoginFields fields{host, from, {}};
  if (host.empty()) {
    fields.server = configuration_.ReadString(kConfigurationSection, kConfigurationKey);
  }
  if (AskForLogin(request, "SMTP Login", fields)) {
    host = fields.server;
    from = fields.name;
  }
  if (!complete()) throw ServerError(error_code::kLoginData);
}

}  // namespace quillon
