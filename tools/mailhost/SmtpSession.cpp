#include "SmtpSession.h"

#include <algorithm>
#include <utility>

#include "SmtpPath.h"
#include "Text.h"

namespace mailhost {

namespace {

// Far beyond the 100 that RFC 5321 4.5.3.1.8 asks for; it only bounds the memory.
constexpr std::size_t kMaxRecipients = 100'000;

bool IsKnownMailParameter(const std::string& parameter) {
  if (StartsIgnoringCase(parameter, "SIZE=")) {
    return ParseNumber(std::string_view(parameter).substr(5)).has_value();
  }
  return EqualIgnoringCase(parameter, "BODY=7BIT") || EqualIgnoringCase(parameter, "BODY=8BITMIME");
}

}  // namespace

struct SmtpSession::Command {
  std::string_view word;
  void (SmtpSession::*run)(std::string_view argument);
};

const SmtpSession::Command SmtpSession::kCommands[] = {
    {"HELO", &SmtpSession::Helo}, {"EHLO", &SmtpSession::Ehlo}, {"MAIL", &SmtpSession::Mail},
    {"RCPT", &SmtpSession::Rcpt}, {"DATA", &SmtpSession::Data}, {"RSET", &SmtpSession::Rset},
    {"NOOP", &SmtpSession::Noop}, {"VRFY", &SmtpSession::Vrfy}, {"HELP", &SmtpSession::Help},
    {"QUIT", &SmtpSession::Quit},
};

SmtpSession::SmtpSession(Connection& connection, const std::vector<FaultRule>& rules,
                         BeginDelivery begin)
    : replier_(connection, rules, Protocol::kSmtp),
      content_(connection.ConversationLog(), std::move(begin)) {}

void SmtpSession::OnOpen() {
  if (replier_.Enter("GREETING")) replier_.Reply("220 localhost SMTP mailhost");
}

void SmtpSession::OnLine(std::string_view line) {
  std::string_view argument = line;
  const std::string word = ToUpper(TakeWord(argument));
  if (!replier_.Enter(word)) return;
  for (const Command& command : kCommands) {
    if (word == command.word) {
      (this->*command.run)(argument);
      return;
    }
  }
  replier_.Reply("500 command not recognized");
}

void SmtpSession::OnBadLine(std::string_view why) {
  replier_.Reply("500 " + std::string(why));
}

void SmtpSession::Helo(std::string_view argument) {
  Greet(argument, "250 localhost");
}

void SmtpSession::Ehlo(std::string_view argument) {
  Greet(argument, "250-localhost\r\n250-PIPELINING\r\n250-SIZE\r\n250 8BITMIME");
}

void SmtpSession::Greet(std::string_view argument, std::string reply) {
  if (argument.empty()) {
    replier_.Reply("501 a host name is needed");
    return;
  }
  ResetTransaction();
  greeted_ = true;
  replier_.Reply(std::move(reply));
}

bool SmtpSession::MailMayStart(std::string_view argument) {
  if (!greeted_) {
    replier_.Reply("503 HELO first");
  } else if (hasSender_) {
    replier_.Reply("503 there is a sender already");
  } else if (const auto path = ParseSmtpPath(argument, "FROM:"); !path) {
    replier_.Reply("501 MAIL FROM:<address> is needed");
  } else if (!std::all_of(path->parameters.begin(), path->parameters.end(), IsKnownMailParameter)) {
    replier_.Reply("555 parameter not recognized");
  } else {
    envelope_.sender = path->address;
    return true;
  }
  return false;
}

void SmtpSession::Mail(std::string_view argument) {
  if (!MailMayStart(argument)) return;
  hasSender_ = true;
  replier_.Reply("250 sender ok");
}

void SmtpSession::Rcpt(std::string_view argument) {
  const auto path = ParseSmtpPath(argument, "TO:");
  if (!hasSender_) {
    replier_.Reply("503 MAIL first");
  } else if (!path || path->address.empty()) {
    replier_.Reply("501 RCPT TO:<address> is needed");
  } else if (!path->parameters.empty()) {
    replier_.Reply("555 parameter not recognized");
  } else if (envelope_.recipients.size() >= kMaxRecipients) {
    replier_.Reply("452 too many recipients");
  } else {
    envelope_.recipients.push_back(path->address);
    replier_.Reply("250 recipient ok");
  }
}

void SmtpSession::Data(std::string_view argument) {
  if (!argument.empty()) {
    replier_.Reply("501 DATA takes no argument");
  } else if (envelope_.recipients.empty()) {
    replier_.Reply("503 RCPT first");
  } else if (!content_.Begin()) {
    replier_.Reply("451 the message cannot be stored");
  } else {
    inBody_ = false;
    ignoresBody_ = false;
    replier_.Reply("354 send the message, then a line with a dot alone");
  }
}

std::size_t SmtpSession::OnContent(std::string_view bytes) {
  if (!std::exchange(inBody_, true)) ignoresBody_ = !replier_.Enter("BODY");
  const std::size_t used = content_.Take(bytes);
  if (!content_.Active()) EndContent();
  return used;
}

void SmtpSession::EndContent() {
  const Envelope envelope = std::exchange(envelope_, {});
  ResetTransaction();
  if (ignoresBody_ || !replier_.Enter("TERMINATOR")) {
    content_.Discard();
    return;
  }
  const bool kept = content_.Commit(envelope);
  replier_.Reply(kept ? "250 message accepted" : "452 the message cannot be stored");
}

void SmtpSession::ResetTransaction() {
  hasSender_ = false;
  envelope_ = {};
}

void SmtpSession::Rset(std::string_view /*argument*/) {
  ResetTransaction();
  replier_.Reply("250 reset");
}

void SmtpSession::Noop(std::string_view /*argument*/) {
  replier_.Reply("250 ok");
}

// Every name is known here, as every recipient is taken.
void SmtpSession::Vrfy(std::string_view argument) {
  if (argument.empty()) {
    replier_.Reply("501 a name is needed");
    return;
  }
  std::string address(argument);
  if (address.starts_with('<') && address.ends_with('>')) {
    address = address.substr(1, address.size() - 2);
  }
  if (address.find('@') == std::string::npos) address += "@localhost";
  replier_.Reply("250 <" + address + ">");
}

void SmtpSession::Help(std::string_view /*argument*/) {
  std::string reply = "214";
  for (const Command& command : kCommands) reply.append(" ").append(command.word);
  replier_.Reply(std::move(reply));
}

void SmtpSession::Quit(std::string_view /*argument*/) {
  replier_.Reply("221 bye");
  replier_.Finish();
}

}  // namespace mailhost
