// From the greeting to the login, with a server of which more is asked than RFC 1939 had: CAPA (RFC
// 2449), STLS (RFC 2595) and AUTH (RFC 5034).
#include <algorithm>

#include "core/Text.h"
#include "internet/PopSession.h"
#include "sasl/Apop.h"

namespace quillon {

namespace {

using Connection = SessionFailure::Connection;

// Names of logins that are no mechanisms of SASL.
constexpr std::string_view kUser = "USER";
constexpr std::string_view kApop = "APOP";

constexpr std::string_view kUserNeeds = "USER needs an encrypted connection, or PlainTextLogin.";

// What a server has at most to say about itself.
constexpr int kMostCapabilities = 200;

// "+ " and a challenge (RFC 5034, 4); null for any other line.
std::optional<std::string_view> ChallengeOf(const PopReply& reply) {
  if (reply.positive || !reply.words.starts_with('+')) return std::nullopt;
  return Trim(std::string_view(reply.words).substr(1));
}

bool SaysBusy(const PopReply& reply) {
  return UpperAscii(reply.words).find("BUSY") != std::string::npos;
}

}  // namespace

Task<> PopSession::ExtendedLogIn(std::string greeting) {
  using Security = ConnectionSecurity;
  const auto wanted = Settings().security.connection;
  auto timestamp = std::string(ApopTimestamp(greeting));
  co_await AskCapabilities();
  if (!capabilities_.startTls && wanted == Security::StartTls) {
    NotSecured(internet_error::kNoEncryption,
               "The server does not offer STLS. Its other port may speak TLS from the first byte "
               "on");
  }
  const bool wantsTls = wanted == Security::StartTls || wanted == Security::StartTlsIfOffered;
  if (wantsTls && capabilities_.startTls) {
    const auto reply = co_await Command("STLS");
    if (!reply.positive) Refused(internet_error::kSecuringFailed, reply, Connection::TakesLeave);
    co_await StartTls();
    // What a digest was made with before could have been anybody's.
    timestamp.clear();
    co_await AskCapabilities();
  }
  co_await Authenticate(std::move(timestamp));
}

// A server that does not know the question can do what the oldest can.
Task<> PopSession::AskCapabilities() {
  capabilities_ = {};
  const auto reply = co_await Command("CAPA");
  if (!reply.positive) {
    capabilities_.user = true;
    co_return;
  }
  AwaitData();
  for (int lines = 0;; ++lines) {
    auto& line = co_await NextData();
    if (!IsContent(line)) break;
    if (lines == kMostCapabilities) throw SessionFailure{internet_error::kOverflow};
    if (line.starts) capabilities_.AddLine(line.text);
  }
  StopWaiting();
  TheReport().OnCapabilities(capabilities_.entries);
}

// In the order that was asked for; else what tells nobody the password goes before what does.
Task<> PopSession::Authenticate(std::string timestamp) {
  const auto rules = Settings().security.login;
  const bool mayTell = IsSecured() || rules.plainTextLogin ||
                       Settings().security.connection == ConnectionSecurity::None;
  if (rules.wanted.empty()) {
    auto own = rules;
    own.avoidSystem = !timestamp.empty() || capabilities_.user;
    if (co_await AuthenticateBy(std::move(own))) co_return;
    if (!timestamp.empty() && !password_.empty()) {
      co_await Apop(timestamp);
      co_return;
    }
    if (mayTell && !Settings().security.HasToken()) {
      co_await SayPassword();
      co_return;
    }
    if (!mayTell) NoteObjection(kUserNeeds);
  }
  for (const auto& name : rules.wanted) {
    if (EqualsIgnoreCase(name, kApop)) {
      if (timestamp.empty()) {
        NoteObjection("APOP needs a time stamp in a greeting that came over the same connection.");
        continue;
      }
      co_await Apop(timestamp);
      co_return;
    }
    if (EqualsIgnoreCase(name, kUser)) {
      if (!mayTell) {
        NoteObjection(kUserNeeds);
        continue;
      }
      co_await SayPassword();
      co_return;
    }
    auto one = rules;
    one.wanted.assign(1, name);
    if (co_await AuthenticateBy(std::move(one))) co_return;
  }
  NoCommonLogin();
}

// False when there is no mechanism that both sides can take.
Task<bool> PopSession::AuthenticateBy(LoginRules rules) {
  const auto& ports = Ports().security;
  SessionLogin login(LoginCredentials(), LoginConnection(), ports.crypto, ports.systemLogin);
  if (!co_await PrepareLogin(login, capabilities_.mechanisms, std::move(rules), kLongestPopAuth)) {
    co_return false;
  }
  auto& exchange = login.TheExchange();
  auto line = exchange.Begin();
  if (!line.line) LoginRefused(line.failure, Connection::TakesLeave);
  for (;;) {
    SayOfLogin(line);
    const auto reply = co_await Reply();
    if (const auto challenge = ChallengeOf(reply)) {
      line = exchange.Answer(*challenge);
      if (!line.line) LoginRefused(line.failure, Connection::IsClosed);
      continue;
    }
    if (reply.positive) {
      const auto lie = exchange.Succeeded();
      if (!lie.empty()) LoginRefused(lie, Connection::IsClosed);
      TheReport().OnLogin(login.Method());
      co_return true;
    }
    Status("Failed to Logon to POP server.");
    if (SaysBusy(reply)) Refused(internet_error::kMaildropBusy, reply, Connection::TakesLeave);
    lastError_ = ServerWords(WithoutSecrets(reply.words));
    LoginRefused(exchange.Reason(), Connection::TakesLeave);
  }
}

Task<> PopSession::Apop(std::string timestamp) {
  const auto digest = ApopDigest(Ports().security.crypto, timestamp, password_);
  KeepSecret(digest);
  Say("APOP " + loginName_ + " " + digest, "APOP " + loginName_ + " ****");
  const auto reply = co_await Reply();
  if (reply.positive) {
    TheReport().OnLogin(kApop);
    co_return;
  }
  Status("Failed to Logon to POP server.");
  if (SaysBusy(reply)) Refused(internet_error::kMaildropBusy, reply, Connection::TakesLeave);
  lastError_ = ServerWords(WithoutSecrets(reply.words));
  LoginRefused({}, Connection::TakesLeave);
}

}  // namespace quillon
