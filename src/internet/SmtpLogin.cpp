// From the greeting to the login, with a server of which more is asked than RFC 821 had: EHLO,
// STARTTLS (RFC 3207) and AUTH (RFC 4954).
#include "internet/SmtpSession.h"

namespace quillon {

namespace {

using Connection = SessionFailure::Connection;

constexpr std::int32_t kAuthenticated = 235;
constexpr std::int32_t kChallenge = 334;

bool IsUnknownCommand(const SmtpReply& reply) {
  return reply.Code() == 500 || reply.Code() == 502 || reply.Code() == 504;
}

}  // namespace

Task<> SmtpSession::ExtendedLogIn() {
  using Security = ConnectionSecurity;
  const auto wanted = Settings().security.connection;
  co_await ExtendedHello();
  const bool offered = capabilities_ && capabilities_->startTls;
  if (!offered && wanted == Security::StartTls) {
    NotSecured(internet_error::kNoEncryption,
               "The server does not offer STARTTLS. Its other port may speak TLS from the first "
               "byte on");
  }
  if (offered && (wanted == Security::StartTls || wanted == Security::StartTlsIfOffered)) {
    Say("STARTTLS");
    const auto reply = co_await Reply();
    if (reply.Code() != 220) {
      throw SessionFailure{internet_error::kSecuringFailed, Connection::TakesLeave};
    }
    co_await StartTls();
    co_await ExtendedHello();
  }
  if (Settings().security.HasLogin()) co_await Authenticate();
  LoggedIn();
}

// A server that does not know EHLO gets HELO, and cannot do anything else.
Task<> SmtpSession::ExtendedHello() {
  capabilities_.reset();
  Status("Sending EHLO...");
  for (const auto& name : OwnNames()) {
    Say("EHLO " + name);
    const auto reply = co_await Reply();
    if (reply.IsPositive()) {
      capabilities_ = ReadSmtpCapabilities(reply.Lines());
      TheReport().OnCapabilities(capabilities_->entries);
      co_return;
    }
    if (reply.Code() < 400) Unexpected(reply);
    if (IsUnknownCommand(reply)) break;
  }
  if (!greetWithHelo_) co_return;
  const auto reply = co_await Hello();
  if (!reply.IsPositive() && reply.Code() != 220) Unexpected(reply);
  co_await Reset();
}

Task<> SmtpSession::Authenticate() {
  const auto& ports = Ports().security;
  SessionLogin login(LoginCredentials(), LoginConnection(), ports.crypto, ports.systemLogin);
  auto offered = capabilities_ ? capabilities_->mechanisms : std::vector<std::string>();
  const bool ready =
      co_await PrepareLogin(login, std::move(offered), Settings().security.login, kLongestSmtpAuth);
  if (!ready) NoCommonLogin();
  auto& exchange = login.TheExchange();
  auto line = exchange.Begin();
  if (!line.line) LoginRefused(line.failure, Connection::TakesLeave);
  for (;;) {
    SayOfLogin(line);
    const auto reply = co_await Reply();
    if (reply.Code() == kChallenge) {
      line = exchange.Answer(reply.Text());
      if (!line.line) LoginRefused(line.failure, Connection::IsClosed);
      continue;
    }
    if (reply.Code() == kAuthenticated) {
      const auto lie = exchange.Succeeded();
      if (!lie.empty()) LoginRefused(lie, Connection::IsClosed);
      TheReport().OnLogin(login.Method());
      co_return;
    }
    if (reply.Code() < 400 || reply.Code() == 421) Unexpected(reply);
    LoginRefused(exchange.Reason(), Connection::TakesLeave);
  }
}

}  // namespace quillon
