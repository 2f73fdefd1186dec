#include "internet/SessionReport.h"

#include <utility>

#include "core/Text.h"
#include "internet/InternetError.h"

namespace quillon {

namespace {

// "MAIL FROM" of "MAIL FROM:<a@b>", "AUTH PLAIN" of "AUTH PLAIN ****".
std::string NameOf(std::string_view line) {
  if (line.starts_with("MAIL FROM:") || line.starts_with("RCPT TO:")) {
    return std::string(line.substr(0, line.find(':')));
  }
  const auto word = line.find(' ');
  if (line.starts_with("AUTH ")) return std::string(line.substr(0, line.find(' ', word + 1)));
  return std::string(line.substr(0, word));
}

}  // namespace

void SessionReport::OnConnecting(const std::string& host, std::uint16_t port) {
  *this = {};
  host_ = ServerWords(host);
  port_ = port;
}

void SessionReport::OnOperation() {
  lines_.clear();
  command_ = "the connection";
  answered_ = false;
}

void SessionReport::OnSecured(const TlsFacts& facts) {
  tlsVersion_ = TlsVersionText(facts.version);
  cipher_ = facts.cipher;
  if (facts.chain.empty()) return;
  certificateBytes_ = facts.chain.front();
  certificate_ = CertificatePartiesText(certificateBytes_);
}

// What goes on inside a login keeps the login's name.
void SessionReport::OnCommand(std::string_view line) {
  if (line == "****" || line == "*" || line.empty()) return;
  command_ = NameOf(line);
  answered_ = false;
}

void SessionReport::OnStep(std::string what) {
  command_ = std::move(what);
  answered_ = false;
}

void SessionReport::OnReply(std::vector<std::string> lines) {
  answer_ = Place() + (command_.empty() ? " greeted" : " answered " + command_) + " with: ";
  lines_ = std::move(lines);
  answered_ = true;
  if (command_.empty() && !lines_.empty()) greeting_ = ServerWords(lines_.front());
}

std::string SessionReport::LastReply() const {
  if (lines_.empty()) return {};
  auto text = TrimmedCopy(answer_);
  for (const auto& line : lines_) text += "\r\n" + ServerWords(line);
  return text;
}

std::string SessionReport::Detail(std::int32_t number) const {
  using namespace internet_error;
  const auto said = answered_ ? ServerWords(Join(lines_, " ")) : std::string();
  const auto step = command_.empty() ? std::string("the connection") : command_;
  switch (number) {
    case kSuccess:
      return {};
    case kNotConnected:
    case kNotStarted:
      return "no connection to " + Place() + (obstacle_.empty() ? "" : ": " + obstacle_);
    case kTimedOut:
      return Place() + " did not answer " + step + " in time";
    case kSendTimedOut:
      return Place() + " took no more data";
    case kTextFailed:
    case kAttachmentsFailed:
    case kTerminatorFailed:
    case kConnectionLost:
      return Place() + " closed the connection after " + step +
             (said.empty() ? "" : "; its last words were: " + said);
    default:
      return said.empty() ? std::string() : answer_ + said;
  }
}

}  // namespace quillon
