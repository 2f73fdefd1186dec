#include "internet/LoginData.h"

#include "core/ErrorCode.h"
#include "core/ServerError.h"

namespace quillon {

namespace {

constexpr const char* kConfigurationSection = "Internet";
constexpr const char* kConfigurationKey = "SMTPServer";

}  // namespace

std::string LoginData::SmtpHost(const MailRequest& request) const {
  if (!request.instance.smtpServer.empty()) return request.instance.smtpServer;
  return configuration_.ReadString(kConfigurationSection, kConfigurationKey);
}

// Looks into the file only when the server has changed: a look takes longer than some messages do.
void LoginData::RememberServer(const std::string& host) {
  if (host == rememberedServer_) return;
  auto& configuration = configuration_;
  if (configuration.ReadString(kConfigurationSection, kConfigurationKey) != host) {
    configuration.WriteString(kConfigurationSection, kConfigurationKey, host);
  }
  rememberedServer_ = host;
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
  auto& from = request.shared.message.from;
  const auto complete = [&] { return !SmtpHost(request).empty() && !from.empty(); };
  if (complete()) return;
  LoginFields fields{SmtpHost(request), from, {}};
  if (AskForLogin(request, "SMTP Login", fields)) {
    request.instance.smtpServer = fields.server;
    from = fields.name;
  }
  if (!complete()) throw ServerError(error_code::kLoginData);
}

}  // namespace quillon
