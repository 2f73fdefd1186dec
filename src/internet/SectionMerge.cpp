#include "internet/SectionMerge.h"

#include <string>

namespace quillon {

namespace {

struct ProtocolPorts {
  std::uint16_t plain;
  std::uint16_t tls;
};
constexpr ProtocolPorts kSmtpPorts{25, 465};
constexpr ProtocolPorts kPopPorts{110, 995};

// Where to connect, and how the connection is secured.
void ApplyServer(const ServerSection::Protocol& protocol, std::optional<std::int16_t> security,
                 const ProtocolPorts& ports, const CodePage& codePage, SessionSettings& settings) {
  auto& connection = settings.security.connection;
  if (protocol.security) connection = *protocol.security;
  if (security) connection = static_cast<ConnectionSecurity>(*security);
  if (protocol.host) settings.host = codePage.ToBytes(*protocol.host);
  if (protocol.port) {
    settings.port = *protocol.port;
  } else if (connection == ConnectionSecurity::Tls) {
    // A script that asks for it itself may have put a port for it, other than that of its protocol.
    if (!security || settings.port == ports.plain) settings.port = ports.tls;
  }
}

void ApplyRules(const ServerSection& section, const InternetAccess& access,
                ServerSecurity& security) {
  security.pin = access.pinnedCertificate.value_or(section.pin.value_or(""));
  security.clientCertificate = section.clientCertificate.value_or("");
  security.revocation = section.revocation.value_or(false);
  security.extensions =
      access.extensions ? *access.extensions != kFalse : section.extensions.value_or(false);
  security.login.plainTextLogin = section.plainTextLogin.value_or(false);
  security.login.wanted = WantedLogins(section, access);
  security.oauth = section.oauth;
  security.credentials.accessToken = access.accessToken.value_or("");
}

}  // namespace

void Apply(const ServerSection& section, const InternetAccess& access, const CodePage& codePage,
           SmtpSettings& settings) {
  ApplyServer(section.smtp, access.smtpSecurity, kSmtpPorts, codePage, settings);
  auto& security = settings.security;
  ApplyRules(section, access, security);
  security.deliveryStatus = section.deliveryStatus.value_or(false);
  auto& credentials = security.credentials;
  credentials.loginName = access.smtpLoginName.value_or(section.smtp.user.value_or(""));
  credentials.password = access.smtpPassword.value_or(section.smtp.password.value_or(""));
  // Of a section for both protocols, where only the mailbox has a login.
  auto& wanted = security.login.wanted;
  if (!access.authentication && credentials.loginName.empty() && !security.HasToken() &&
      !NamesSystemLogin(wanted)) {
    wanted.clear();
  }
  if (section.smtpSender) settings.envelopeSender = codePage.ToBytes(*section.smtpSender);
}

void Apply(const ServerSection& section, const InternetAccess& access, const CodePage& codePage,
           PopSettings& settings) {
  ApplyServer(section.pop, access.popSecurity, kPopPorts, codePage, settings);
  auto& security = settings.security;
  ApplyRules(section, access, security);
  if (section.pop.user) settings.loginName = codePage.ToBytes(*section.pop.user);
  if (section.pop.password) settings.password = codePage.ToBytes(*section.pop.password);
  if (!security.AsksForMore() && security.login.wanted.empty() && !security.HasToken()) return;
  auto& credentials = security.credentials;
  credentials.loginName = section.pop.user.value_or(codePage.ToText(settings.loginName));
  credentials.password = section.pop.password.value_or(codePage.ToText(settings.password));
}

std::vector<std::string> WantedLogins(const ServerSection& section, const InternetAccess& access) {
  if (access.authentication) {
    return ReadMechanismNames(*access.authentication).value_or(std::vector<std::string>());
  }
  return section.authentication.value_or(std::vector<std::string>());
}

MessageForm FormOf(const ServerSection& section, const InternetAccess& access) {
  MessageForm form;
  form.charset = access.charset.value_or(section.charset.value_or(""));
  form.replaces = section.replaceCharacters.value_or(false);
  form.modern = access.modernHeaders ? *access.modernHeaders != kFalse
                                     : section.modernHeaders.value_or(false);
  return form;
}

}  // namespace quillon
