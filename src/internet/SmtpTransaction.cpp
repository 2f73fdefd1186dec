// A message to a server that has said what it can do: SIZE (RFC 1870), 8BITMIME (RFC 6152), DSN
// (RFC 3461), SMTPUTF8 (RFC 6531) and, where it takes commands ahead of its replies, everything up
// to the text in one write (RFC 2920).
//
// The rules for what a server refuses are those of the plain transaction. Two things differ when
// the commands are out already. A recipient who is elsewhere gets a transaction of its own behind
// the first. And a reply that ends the exchange ends the connection too, at once: the server may
// have been told DATA, and would take what came next for the message.
#include <algorithm>
#include <optional>
#include <utility>

#include "internet/SmtpSession.h"

namespace quillon {

namespace {

using Connection = SessionFailure::Connection;

// Recipients of one write: replies must find room while it goes on.
constexpr std::size_t kMostAtOnce = 1000;

[[noreturn]] void EndAtOnce(std::int32_t number) {
  throw SessionFailure{number};
}

// Where the recipient is instead; none when the reply does not say so.
std::optional<std::string> ForwardOf(const SmtpReply& reply, const std::string& path) {
  if (reply.Code() != 551) return std::nullopt;
  const auto forward = ForwardPath(reply.Text());
  if (!LeadsOn(path, forward)) return std::nullopt;
  return std::string(forward);
}

}  // namespace

Task<> SmtpSession::ExtendedTransaction(const Envelope& envelope, MessageData& message) {
  RequireRoom(message);
  Status("Mail from...");
  if (capabilities_->pipelining) {
    co_await Pipelined(envelope, message);
  } else {
    co_await StepByStep(envelope, message);
  }
  MessageSent();
}

void SmtpSession::RequireRoom(const MessageData& message) {
  const auto most = capabilities_->mostBytes;
  if (!capabilities_->size || most == 0 || message.Size() <= most) return;
  throw SessionFailure(552, Connection::Stays, {},
                       Settings().host + " takes messages of at most " + std::to_string(most) +
                           " bytes, and this one has " + std::to_string(message.Size()));
}

void SmtpSession::RequireUtf8() {
  if (capabilities_ && capabilities_->utf8) return;
  throw SessionFailure(internet_error::kNoUtf8Addresses, Connection::Stays, {},
                       Settings().host + " does not offer SMTPUTF8");
}

std::string SmtpSession::MailCommand(const Envelope& envelope, const MessageData& message) const {
  auto command = "MAIL FROM:<" + sender_ + ">";
  if (capabilities_->size) command += " SIZE=" + std::to_string(message.Size());
  if (capabilities_->eightBitMime && message.IsEightBit()) command += " BODY=8BITMIME";
  if (envelope.inUtf8) command += " SMTPUTF8";
  const bool reports = Settings().security.deliveryStatus && capabilities_->deliveryStatus;
  if (reports && !envelope.notify.empty()) command += " RET=HDRS";
  return command;
}

std::string SmtpSession::RecipientCommand(const Envelope& envelope, const std::string& path) const {
  if (!capabilities_) return "RCPT TO: <" + path + ">";
  auto command = "RCPT TO:<" + path + ">";
  const bool reports = Settings().security.deliveryStatus && capabilities_->deliveryStatus;
  if (reports && !envelope.notify.empty()) command += " NOTIFY=" + envelope.notify;
  return command;
}

Task<> SmtpSession::StepByStep(const Envelope& envelope, MessageData& message) {
  const auto reply = co_await Command(MailCommand(envelope, message));
  if (!reply.IsPositive()) Unexpected(reply);
  co_await Recipients(envelope);
  Status("Sending message...");
  co_await Data(message);
}

Task<> SmtpSession::Pipelined(const Envelope& envelope, MessageData& message) {
  std::vector<Path> paths;
  paths.reserve(envelope.recipients.size());
  for (const auto& recipient : envelope.recipients) paths.push_back({recipient, recipient});
  if (!envelope.override.empty()) paths.assign(1, {envelope.override, envelope.override});
  paths = co_await AllAtOnce(envelope, std::move(paths), message, false);
  for (int forwards = 1; !paths.empty(); ++forwards) {
    message.Rewind();
    std::vector<std::string> recipients;
    recipients.reserve(paths.size());
    for (const auto& path : paths) recipients.push_back(path.recipient);
    const auto refusedBefore = refused_.size();
    bool failed = false;
    try {
      paths = co_await AllAtOnce(envelope, std::move(paths), message, forwards == kMostForwards);
    } catch (const SessionFailure&) {
      // Others have the message by now, or may have: only these have not.
      if (!envelope.override.empty()) throw;
      failed = true;
    }
    if (!failed) continue;
    refused_.resize(refusedBefore);
    refused_.insert(refused_.end(), recipients.begin(), recipients.end());
    EndAtOnce(internet_error::kSomeRefused);
  }
}

Task<std::vector<SmtpSession::Path>> SmtpSession::AllAtOnce(const Envelope& envelope,
                                                            std::vector<Path> paths,
                                                            MessageData& message, bool isLast) {
  const auto mail = MailCommand(envelope, message);
  std::vector<Path> elsewhere;
  std::size_t accepted = 0;
  std::size_t said = 0;
  for (std::size_t heard = 0; heard < paths.size(); ++heard) {
    if (heard == said) {
      said = std::min(paths.size(), heard + kMostAtOnce);
      SayEnvelope(envelope, heard == 0 ? mail : std::string(), {&paths[heard], said - heard},
                  said == paths.size());
    }
    if (heard == 0) {
      const auto reply = co_await ReplyTo(mail);
      if (!reply.IsPositive()) EndAtOnce(NumberOf(reply));
      Status("Sending recipients...");
    }
    const auto reply = co_await ReplyTo(RecipientCommand(envelope, paths[heard].path));
    if (reply.IsPositive()) {
      ++accepted;
    } else if (auto forward = ForwardOf(reply, paths[heard].path); forward && !isLast) {
      elsewhere.push_back({paths[heard].recipient, *std::move(forward)});
    } else {
      RecipientRefused(reply, paths[heard].recipient, !envelope.override.empty());
    }
  }
  Status("Sending message...");
  co_await TextForAccepted(message, accepted, !elsewhere.empty());
  co_return elsewhere;
}

// In one write: `mail`, unless it is empty, the recipients, and DATA behind the last of them.
void SmtpSession::SayEnvelope(const Envelope& envelope, const std::string& mail,
                              std::span<const Path> paths, bool isEnd) {
  std::vector<std::string> commands;
  commands.reserve(paths.size() + 2);
  if (!mail.empty()) commands.push_back(mail);
  for (const auto& path : paths) commands.push_back(RecipientCommand(envelope, path.path));
  if (isEnd) commands.emplace_back("DATA");
  SayAll(commands);
}

void SmtpSession::RecipientRefused(const SmtpReply& reply, const std::string& recipient,
                                   bool isOnlyOne) {
  const bool refused = reply.Code() == 550 || reply.Code() == 551;
  if (refused || reply.Code() == 501) refused_.push_back(recipient);
  if (reply.Code() == 501) EndAtOnce(internet_error::kNotLocal);
  if (!refused || isOnlyOne) EndAtOnce(NumberOf(reply));
}

// What DATA is answered with; it has been said already.
Task<> SmtpSession::TextForAccepted(MessageData& message, std::size_t accepted, bool othersFollow) {
  const auto reply = co_await ReplyTo("DATA");
  const bool forNobody = accepted == 0 && othersFollow;
  if (reply.Code() == 354 && !forNobody) {
    co_await Text(message);
  } else if (reply.Code() == 354) {
    co_await SayNothing();
  } else if (forNobody && reply.Code() >= 400) {
    co_await Reset();
  } else {
    Unexpected(reply);
  }
}

// The server wants a message for nobody: an empty one (RFC 2920, 3.1), whatever it says to that.
Task<> SmtpSession::SayNothing() {
  Say(".");
  co_await Reply();
  co_await Reset();
}

Task<SmtpReply> SmtpSession::ReplyTo(std::string command) {
  TheReport().OnCommand(command);
  AwaitReply();
  auto reply = co_await Reply();
  co_return reply;
}

}  // namespace quillon
