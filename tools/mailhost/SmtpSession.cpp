#include "SmtpSession.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "MailParameters.h"
#include "SmtpPath.h"
#include "Text.h"

namespace mailhost {

namespace {

// Far beyond the 100 that RFC 5321 4.5.3.1.8 asks for; it only bounds the memory.
constexpr std::size_t kMaxRecipients = 100'000;
constexpr int kMaxRefusedLogins = 10;

// The subject and detail of a status code; ".0.0", which says nothing, for the others.
constexpr std::pair<std::string_view, std::string_view> kStatus[] = {
    {"235", ".7.0"}, {"452", ".3.1"}, {"454", ".7.0"}, {"500", ".5.2"}, {"501", ".5.4"},
    {"503", ".5.1"}, {"530", ".7.0"}, {"535", ".7.8"}, {"552", ".3.4"}, {"555", ".5.4"},
};

std::string WithStatus(const std::string& reply) {
  if (reply.front() == '3') return reply;
  const std::string_view code = std::string_view(reply).substr(0, 3);
  const auto* const row = std::find_if(std::begin(kStatus), std::end(kStatus),
                                       [&](const auto& one) { return one.first == code; });
  std::string text(code);
  text.append(" ").append(1, reply.front());
  text.append(row != std::end(kStatus) ? row->second : ".0.0");
  return text + reply.substr(3);
}

}  // namespace

struct SmtpSession::Command {
  std::string_view word;
  void (SmtpSession::*run)(std::string_view argument);
};

const SmtpSession::Command SmtpSession::kCommands[] = {
    {"HELO", &SmtpSession::Helo},         {"EHLO", &SmtpSession::Ehlo},
    {"STARTTLS", &SmtpSession::StartTls}, {"AUTH", &SmtpSession::Auth},
    {"MAIL", &SmtpSession::Mail},         {"RCPT", &SmtpSession::Rcpt},
    {"DATA", &SmtpSession::Data},         {"BDAT", &SmtpSession::Bdat},
    {"RSET", &SmtpSession::Rset},         {"NOOP", &SmtpSession::Noop},
    {"VRFY", &SmtpSession::Vrfy},         {"HELP", &SmtpSession::Help},
    {"QUIT", &SmtpSession::Quit},
};

SmtpSession::SmtpSession(Connection& connection, const Service& service, bool secured,
                         BeginDelivery begin)
    : connection_(connection),
      service_(service),
      opensSecured_(secured),
      replier_(connection, service.rules, Protocol::kSmtp),
      login_(service),
      content_(connection.ConversationLog(), std::move(begin)) {}

void SmtpSession::OnOpen() {
  if (opensSecured_) {
    replier_.Secure(service_.tls->NewSession());
  } else {
    Welcome();
  }
}

// Whatever the client has said before is forgotten (RFC 3207 4.2).
void SmtpSession::OnSecured() {
  ResetTransaction();
  greeted_ = false;
  loggedIn_ = false;
  if (std::exchange(opensSecured_, false)) Welcome();
}

void SmtpSession::Welcome() {
  if (replier_.Enter("GREETING")) replier_.Reply("220 localhost SMTP mailhost");
}

void SmtpSession::OnLine(std::string_view line) {
  if (ExpectsSecret()) {
    Response(line);
    return;
  }
  std::string_view argument = line;
  const std::string word = ToUpper(TakeWord(argument));
  if (!replier_.Enter(word)) return;
  for (const Command& command : kCommands) {
    if (word == command.word && Offers(word)) {
      (this->*command.run)(argument);
      return;
    }
  }
  Say("500 command not recognized");
}

bool SmtpSession::Offers(std::string_view word) const {
  if (word == "STARTTLS") return service_.offersTls && connection_.Tls() == nullptr;
  if (word == "AUTH") return !service_.mechanisms.empty();
  return word != "BDAT" || HasCapability(service_, "CHUNKING");
}

void SmtpSession::OnBadLine(std::string_view why) {
  Say("500 " + std::string(why));
}

void SmtpSession::Say(std::string reply) {
  const bool hasStatus = HasCapability(service_, "ENHANCEDSTATUSCODES");
  replier_.Reply(hasStatus ? WithStatus(reply) : std::move(reply));
}

void SmtpSession::Helo(std::string_view argument) {
  Greet(argument, "250 localhost");
}

void SmtpSession::Ehlo(std::string_view argument) {
  Greet(argument, Capabilities());
}

std::string SmtpSession::Capabilities() const {
  std::vector<std::string> lines = service_.smtpCapabilities;
  if (Offers("STARTTLS")) lines.emplace_back("STARTTLS");
  std::string logins;
  for (const std::string& name : OfferedMechanisms(service_, connection_.Tls())) {
    logins.append(" ").append(name);
  }
  if (!logins.empty()) lines.push_back("AUTH" + logins);
  std::string reply = "250-localhost";
  for (const std::string& line : lines) reply.append("\r\n250-").append(line);
  reply[reply.rfind("250-") + 3] = ' ';
  return reply;
}

void SmtpSession::Greet(std::string_view argument, std::string reply) {
  if (argument.empty()) {
    Say("501 a host name is needed");
    return;
  }
  ResetTransaction();
  greeted_ = true;
  replier_.Reply(std::move(reply));
}

void SmtpSession::StartTls(std::string_view argument) {
  if (!argument.empty()) {
    Say("501 STARTTLS takes no argument");
    return;
  }
  Say("220 begin TLS");
  replier_.Secure(service_.tls->NewSession());
}

bool SmtpSession::LoginMayStart() {
  if (!greeted_) {
    Say("503 EHLO first");
  } else if (service_.requiresTls && connection_.Tls() == nullptr) {
    Say("530 Must issue a STARTTLS command first");
  } else if (loggedIn_) {
    Say("503 you are logged in already");
  } else if (hasSender_) {
    Say("503 not within a message");
  } else {
    return true;
  }
  return false;
}

void SmtpSession::Auth(std::string_view argument) {
  if (LoginMayStart()) AnswerLogin(login_.Begin(argument, connection_.Tls()));
}

void SmtpSession::Response(std::string_view line) {
  if (!replier_.Enter("RESPONSE")) {
    login_.GiveUp();
  } else if (login_.Active()) {
    AnswerLogin(login_.Continue(line));
  } else {
    // A fault has asked for it.
    AnswerLogin({LoginDialogue::Kind::kRefused});
  }
}

void SmtpSession::AnswerLogin(const LoginDialogue::Answer& answer) {
  using Kind = LoginDialogue::Kind;
  switch (answer.kind) {
    case Kind::kChallenge:
      return replier_.Reply("334 " + answer.challenge);
    case Kind::kAccepted:
      loggedIn_ = true;
      return Say("235 you are logged in");
    case Kind::kUnknown:
      return Say("504 there is no such mechanism");
    case Kind::kMalformed:
      return Say("501 this is no base64");
    case Kind::kCancelled:
      return Say("501 login cancelled");
    case Kind::kRefused:
      break;
  }
  if (++refusedLogins_ < kMaxRefusedLogins) return Say("535 wrong name or password");
  Say("421 too many logins were refused");
  replier_.Finish();
}

bool SmtpSession::MailMayStart(std::string_view argument) {
  if (!greeted_) {
    Say("503 HELO first");
  } else if (service_.requiresTls && connection_.Tls() == nullptr) {
    Say("530 Must issue a STARTTLS command first");
  } else if (service_.requiresLogin && !loggedIn_) {
    Say("530 authentication is needed");
  } else if (hasSender_) {
    Say("503 there is a sender already");
  } else if (const auto path = ParseSmtpPath(argument, "FROM:"); !path) {
    Say("501 MAIL FROM:<address> is needed");
  } else {
    ReadParameters read = ReadMailParameters(path->parameters, service_);
    envelope_.sender = {path->address, std::move(read.kept)};
    if (read.refusal.empty()) return true;
    Say(std::move(read.refusal));
  }
  return false;
}

void SmtpSession::Mail(std::string_view argument) {
  if (!MailMayStart(argument)) return;
  hasSender_ = true;
  Say("250 sender ok");
}

void SmtpSession::Rcpt(std::string_view argument) {
  const auto path = ParseSmtpPath(argument, "TO:");
  if (!hasSender_) {
    Say("503 MAIL first");
  } else if (!path || path->address.empty()) {
    Say("501 RCPT TO:<address> is needed");
  } else if (ReadParameters read = ReadRcptParameters(path->parameters, service_);
             !read.refusal.empty()) {
    Say(std::move(read.refusal));
  } else if (envelope_.recipients.size() >= kMaxRecipients) {
    Say("452 too many recipients");
  } else {
    envelope_.recipients.push_back({path->address, std::move(read.kept)});
    Say("250 recipient ok");
  }
}

void SmtpSession::Data(std::string_view argument) {
  if (!argument.empty()) {
    Say("501 DATA takes no argument");
  } else if (envelope_.recipients.empty()) {
    Say("503 RCPT first");
  } else if (content_.HasMessage()) {
    Say("503 the message comes in chunks");
  } else if (!content_.Begin()) {
    Say("451 the message cannot be stored");
  } else {
    inBody_ = false;
    ignoresBody_ = false;
    isChunk_ = false;
    Say("354 send the message, then a line with a dot alone");
  }
}

// RFC 3030 2. The bytes of a chunk that is refused come all the same.
void SmtpSession::Bdat(std::string_view argument) {
  const auto size = ParseNumber(TakeWord(argument));
  isLastChunk_ = EqualIgnoringCase(argument, "LAST");
  if (!size || (!isLastChunk_ && !argument.empty())) {
    // Where the next command begins cannot be known.
    Say("501 BDAT size [LAST] is needed");
    replier_.Finish();
    return;
  }
  chunkRefusal_ = envelope_.recipients.empty() ? "503 RCPT first" : "";
  if (!content_.HasMessage()) {
    inBody_ = false;
    ignoresBody_ = false;
  }
  isChunk_ = true;
  if (!chunkRefusal_.empty()) content_.Discard();
  if (!content_.BeginChunk(*size)) chunkRefusal_ = "451 the message cannot be stored";
  if (!content_.Active()) EndChunk();
}

std::size_t SmtpSession::OnContent(std::string_view bytes) {
  if (!std::exchange(inBody_, true)) ignoresBody_ = !replier_.Enter("BODY");
  const std::size_t used = content_.Take(bytes);
  if (!content_.Active()) isChunk_ ? EndChunk() : EndContent();
  return used;
}

void SmtpSession::EndChunk() {
  if (ignoresBody_) {
    ResetTransaction();
  } else if (!chunkRefusal_.empty()) {
    ResetTransaction();
    Say(chunkRefusal_);
  } else if (isLastChunk_) {
    EndContent();
  } else {
    Say("250 chunk received");
  }
}

void SmtpSession::EndContent() {
  const Envelope envelope = std::exchange(envelope_, {});
  const bool taken = !ignoresBody_ && replier_.Enter("TERMINATOR");
  const std::uint64_t limit = SizeLimit(service_).value_or(content_.Size());
  if (!taken || content_.Size() > limit) {
    ResetTransaction();
    if (taken) Say("552 the message is too large");
    return;
  }
  const bool kept = content_.Commit(envelope);
  ResetTransaction();
  Say(kept ? "250 message accepted" : "452 the message cannot be stored");
}

void SmtpSession::ResetTransaction() {
  hasSender_ = false;
  envelope_ = {};
  content_.Drop();
}

void SmtpSession::Rset(std::string_view /*argument*/) {
  ResetTransaction();
  Say("250 reset");
}

void SmtpSession::Noop(std::string_view /*argument*/) {
  Say("250 ok");
}

// Every name is known here, as every recipient is taken.
void SmtpSession::Vrfy(std::string_view argument) {
  if (argument.empty()) {
    Say("501 a name is needed");
    return;
  }
  std::string address(argument);
  if (address.starts_with('<') && address.ends_with('>')) {
    address = address.substr(1, address.size() - 2);
  }
  if (address.find('@') == std::string::npos) address += "@localhost";
  Say("250 <" + address + ">");
}

void SmtpSession::Help(std::string_view /*argument*/) {
  std::string reply = "214";
  for (const Command& command : kCommands) {
    if (Offers(command.word)) reply.append(" ").append(command.word);
  }
  Say(std::move(reply));
}

void SmtpSession::Quit(std::string_view /*argument*/) {
  Say("221 bye");
  replier_.Finish();
}

}  // namespace mailhost
