#include "internet/LoginData.h"

#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "internet/SectionMerge.h"

namespace quillon {

namespace {

constexpr const char* kConfigurationSection = "Internet";
constexpr const char* kSmtpKey = "SMTPServer";
constexpr const char* kPopKey = "POPServer";

}  // namespace

void LoginData::RememberSmtp(const std::string& host) {
  Remember(kSmtpKey, host);
}

void LoginData::RememberPop(const std::string& host) {
  Remember(kPopKey, host);
}

// The user may have changed the file meanwhile.
void LoginData::Remember(const char* key, const std::string& host) {
  if (host.empty() || Remembered(key) == host) return;
  configuration_.WriteString(kConfigurationSection, key, host);
}

std::string LoginData::Remembered(const char* key) const {
  return configuration_.ReadString(kConfigurationSection, key);
}

bool LoginData::AskForLogin(const MailRequest& request, LoginQuestion question,
                            LoginFields& fields) {
  if (request.instance.loginDialog == kFalse) return false;
  question.owner = request.shared.ownerWindow;
  const auto answer = prompt_.Ask(question, fields);
  if (answer == LoginPrompt::Answer::Cancelled) {
    throw ServerError(error_code::kUserAborted, "User selected cancel in dialog.");
  }
  return answer == LoginPrompt::Answer::Entered;
}

bool LoginData::HasPop(const MailRequest& request) {
  const auto& instance = request.instance;
  const bool host = !instance.postOffice.empty();
  const bool name = !instance.loginName.empty();
  if (host && name) return true;
  const auto section = servers_.For(instance.postOffice);
  return (host || section.pop.host) &&
         (name || section.pop.user || NamesSystemLogin(WantedLogins(section, instance.access)));
}

bool LoginData::HasSmtp(const MailRequest& request) {
  if (request.shared.message.from.empty()) return false;
  const auto& host = request.instance.smtpServer;
  return !host.empty() || servers_.For(host).smtp.host;
}

void LoginData::PreparePop(MailRequest& request) {
  auto& instance = request.instance;
  if (HasPop(request)) return;
  LoginFields fields{instance.postOffice, instance.loginName, instance.password};
  if (fields.server.empty()) fields.server = Remembered(kPopKey);
  const LoginQuestion question{.caption = "POP Login",
                               .server = "POP3 &server:",
                               .name = "User &name:",
                               .password = "&Password:"};
  if (AskForLogin(request, question, fields)) {
    instance.postOffice = fields.server;
    instance.loginName = fields.name;
    instance.password = fields.password;
  }
  if (!HasPop(request)) throw ServerError(error_code::kLoginData);
}

void LoginData::PrepareSmtp(MailRequest& request) {
  auto& host = request.instance.smtpServer;
  auto& from = request.shared.message.from;
  if (HasSmtp(request)) return;
  LoginFields fields{host, from, {}};
  if (fields.server.empty()) fields.server = Remembered(kSmtpKey);
  const LoginQuestion question{
      .caption = "SMTP Login", .server = "SMTP &server:", .name = "Your &address:"};
  if (AskForLogin(request, question, fields)) {
    host = fields.server;
    from = fields.name;
  }
  if (!HasSmtp(request)) throw ServerError(error_code::kLoginData);
}

}  // namespace quillon
