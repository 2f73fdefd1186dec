// What a session does for servers of today: securing its connection, and logging in to it.
#include <algorithm>
#include <utility>

#include "internet/MailSession.h"
#include "net/Certificate.h"

namespace quillon {

namespace {

using Connection = SessionFailure::Connection;

// The data of tls-server-end-point (RFC 5929, 4.1); empty when the certificate has none.
std::string EndPointOf(const SecureConnect::Result& result, const Crypto& crypto) {
  if (result.facts.chain.empty()) return {};
  const auto& own = result.facts.chain.front();
  const auto certificate = ReadCertificate(own);
  if (!certificate) return {};
  switch (certificate->signatureDigest) {
    case SignatureDigest::Md5:
    case SignatureDigest::Sha1:
    case SignatureDigest::Sha256:
      return crypto.Digest(HashAlgorithm::kSha256, own);
    case SignatureDigest::Sha512:
      return crypto.Digest(HashAlgorithm::kSha512, own);
    default:
      return {};
  }
}

// What both ends know of the connection and nobody in between does (RFC 5929): of the handshake, or
// else of the certificate.
ChannelBinding BindingOf(const std::string& unique, const std::string& endPoint) {
  if (!unique.empty()) return {"tls-unique", unique};
  if (endPoint.empty()) return {};
  return {"tls-server-end-point", endPoint};
}

}  // namespace

Task<> MailSession::Secure(std::unique_ptr<ByteStream> stream) {
  const auto& security = settings_.security;
  CertificateDemand demand;
  demand.host = settings_.host;
  demand.trust.revocation = security.revocation;
  if (!security.pin.empty()) {
    demand.pin = ReadPin(security.pin);
    if (!demand.pin) {
      throw SessionFailure(
          internet_error::kCertificateRefused, Connection::IsClosed, {},
          "the pin is not 64 hexadecimal digits, with or without \"key:\" in front");
    }
  }
  Log(name_ + " securing the connection... ");
  report_.OnStep("the handshake of TLS");
  secure_.Start(std::move(stream), std::move(demand), security.clientCertificate,
                [this](SecureConnect::Result result) { OnSecureResult(std::move(result)); });
  co_await Wait(*this, Wait::For::Connection);
}

void MailSession::OnSecureResult(SecureConnect::Result result) {
  using Outcome = SecureConnect::Outcome;
  report_.OnSecured(result.facts);
  if (result.outcome == Outcome::Secured) {
    endPoint_ = EndPointOf(result, ports_.security.crypto);
    binding_ = BindingOf(result.uniqueBinding, endPoint_);
    secured_ = true;
    report_.OnStep({});
    LogSecured(result.facts);
    socket_.Attach(std::move(result.stream));
    return wait_->End();
  }
  Log(name_ + " not secured: ", result.reason);
  if (result.outcome == Outcome::CertificateRefused) {
    return Fail(SessionFailure(internet_error::kCertificateRefused, Connection::IsClosed, {},
                               result.reason));
  }
  Fail(
      SessionFailure(internet_error::kSecuringFailed, Connection::IsClosed, {},
                     settings_.host + ":" + std::to_string(settings_.port) + ": " + result.reason));
}

void MailSession::LogSecured(const TlsFacts& facts) {
  if (!ports_.log.IsOpen()) return;
  Log(name_ + " secured: ", settings_.host + " (" + connect_.Address() + ") port " +
                                std::to_string(settings_.port) + ", " +
                                TlsVersionText(facts.version) + ", " + facts.cipher);
  const bool pinned = !settings_.security.pin.empty();
  Log(name_ + " certificate: ",
      std::string(pinned ? "the pinned one. " : "accepted. ") + report_.Certificate());
}

// Whatever the server has said before could have been anybody's.
Task<> MailSession::StartTls() {
  StopWaiting();
  auto stream = socket_.Detach();
  inLongLine_ = false;
  if (stream == nullptr) {
    NotSecured(internet_error::kSecuringFailed,
               "the server said something before the connection was secured");
  }
  co_await Secure(std::move(stream));
}

void MailSession::NotSecured(std::int32_t number, std::string why) {
  throw SessionFailure(number, Connection::IsClosed, {}, std::move(why));
}

ConnectionFacts MailSession::LoginConnection() const {
  ConnectionFacts facts{
      settings_.host, settings_.port, secured_, {}, name_ == "POP" ? "pop" : "smtp"};
  if (secured_) {
    facts.binding = binding_;
    facts.endPoint = endPoint_;
  }
  return facts;
}

Task<> MailSession::ObtainToken() {
  tokenRequest_ =
      ports_.security.tokens.Obtain(settings_.security.oauth, [this](AccessToken token) {
        token_ = std::move(token);
        wait_->End();
      });
  co_await Wait(*this, Wait::For::Connection);
  tokenRequest_.reset();
  if (token_.token.empty()) {
    throw SessionFailure(internet_error::kNoAccessToken, Connection::TakesLeave, {},
                         std::exchange(token_, {}).failure);
  }
}

Task<bool> MailSession::PrepareLogin(SessionLogin& login, std::vector<std::string> offered,
                                     LoginRules rules, std::size_t longestCommand) {
  StopWaiting();
  if (login.WantsToken(settings_.security.oauth)) {
    co_await ObtainToken();
    KeepSecret(token_.token);
    login.SetToken(token_.token);
  }
  const auto reason = login.Choose(offered, rules, longestCommand);
  if (reason.empty()) co_return true;
  NoteObjection(reason);
  co_return false;
}

void MailSession::NoteObjection(std::string_view sentence) {
  if (!objections_.empty()) objections_ += ' ';
  objections_ += sentence;
}

void MailSession::NoCommonLogin() {
  throw SessionFailure(internet_error::kNoCommonLogin, Connection::TakesLeave, {},
                       std::exchange(objections_, {}));
}

// What goes over the wire is as good as what it was made of, and a server may repeat it.
void MailSession::SayOfLogin(const ExchangeLine& line) {
  if (!line.line) return;
  const auto word = line.line->rfind(' ') + 1;
  if (line.shown != *line.line) KeepSecret(std::string_view(*line.line).substr(word));
  Say(*line.line, line.shown);
}

void MailSession::LoginRefused(std::string_view reason, Connection connection) {
  if (!std::exchange(token_, {}).token.empty()) {
    ports_.security.tokens.Forget(settings_.security.oauth);
  }
  auto detail = report_.Detail(internet_error::kLoginRefused);
  if (!reason.empty()) {
    detail += (detail.empty() ? "" : "; ") + ServerWords(WithoutSecrets(reason));
  }
  throw SessionFailure(internet_error::kLoginRefused, connection, {}, std::move(detail));
}

void MailSession::KeepSecret(std::string_view secret) {
  const bool known = std::find(secrets_.begin(), secrets_.end(), secret) != secrets_.end();
  if (!secret.empty() && !known) secrets_.emplace_back(secret);
}

std::string MailSession::WithoutSecrets(std::string_view text) const {
  std::string shown(text);
  for (const auto& secret : secrets_) shown = WithoutSecret(shown, secret);
  return shown;
}

void MailSession::NoteReply(const std::vector<std::string>& lines) {
  std::vector<std::string> shown;
  shown.reserve(lines.size());
  for (const auto& line : lines) shown.push_back(WithoutSecrets(line));
  report_.OnReply(std::move(shown));
}

}  // namespace quillon
