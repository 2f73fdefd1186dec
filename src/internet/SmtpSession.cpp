// The reply codes that have rules of their own: 220, 250 and 251, 354, 501, 550, 551. Any other one
// from 400 on ends an operation with itself as the result, unless the command says otherwise; any
// other one below makes no sense.
#include "internet/SmtpSession.h"

#include <algorithm>
#include <array>
#include <utility>

#include "internet/InternetErrorText.h"
#include "net/WireText.h"

namespace quillon {

namespace {

using Connection = SessionFailure::Connection;

// So often a server may answer to RSET with a greeting or a refusal.
constexpr int kMostEvasions = 5;

// What HELO may hold: a host name has no other characters (RFC 5321, 4.1.2).
std::string HostNameText(std::string name) {
  std::erase_if(name, [](char c) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    return !letter && !(c >= '0' && c <= '9') && c != '-' && c != '.';
  });
  return name.empty() ? "localhost" : name;
}

// Valid for every host (RFC 5321, 4.1.3).
std::string AddressLiteral(const LineSocket& socket) {
  return (socket.IsIPv6() ? "[IPv6:" : "[") + socket.LocalAddress() + "]";
}

bool IsRefusal(const SmtpReply& reply) {
  return reply.Code() >= 400 && reply.Code() != 551;
}

[[noreturn]] void Leave(std::int32_t number) {
  throw SessionFailure{number, Connection::TakesLeave};
}

}  // namespace

void SmtpSession::Take(const SmtpSettings& settings) {
  sender_ = settings.envelopeSender.empty() ? settings.sender : settings.envelopeSender;
  greetWithHelo_ = settings.greetWithHelo;
}

Task<SessionResult> SmtpSession::Login(SmtpSettings settings) {
  Take(settings);
  co_return co_await Converse(std::move(settings), []() -> Task<> { co_return; });
}

Task<SessionResult> SmtpSession::Send(SmtpSettings settings, Envelope envelope,
                                      MessageData& message) {
  Take(settings);
  refused_.clear();
  co_return co_await Converse(std::move(settings), [&] { return Transaction(envelope, message); });
}

Task<SessionResult> SmtpSession::Resolve(SmtpSettings settings, std::string name) {
  Take(settings);
  resolved_.clear();
  co_return co_await Converse(std::move(settings), [&] { return Verify(name); });
}

Task<> SmtpSession::LogIn() {
  auto reply = co_await Reply();
  if (reply.Code() != 220) Unexpected(reply);
  Status("Connected to server...");
  capabilities_.reset();
  if (Settings().security.AsksForMore() || Settings().security.HasLogin()) {
    co_await ExtendedLogIn();
  } else if (greetWithHelo_) {
    Status("Sending HELO...");
    reply = co_await Hello();
    if (!reply.IsPositive() && reply.Code() != 220) Unexpected(reply);
    co_await Reset();
  }
  LoggedIn();
}

std::array<std::string, 3> SmtpSession::OwnNames() const {
  return {HostNameText(Ports().network.LocalHostName()), sender_, AddressLiteral(Socket())};
}

// The reply to the first name that the server does not refuse.
Task<SmtpReply> SmtpSession::Hello() {
  const auto names = OwnNames();
  SmtpReply reply;
  for (const auto& name : names) {
    Say("HELO " + name);
    reply = co_await Reply();
    if (reply.Code() < 400) co_return reply;
  }
  Leave(reply.Code());
}

// A refusal is no answer, and a server that greets is asked again.
Task<> SmtpSession::Reset() {
  Say("RSET");
  for (int evasions = 0; evasions < kMostEvasions; ++evasions) {
    const auto reply = co_await Reply();
    if (reply.IsPositive()) co_return;
    if (reply.Code() == 220) {
      Say("RSET");
    } else if (!IsRefusal(reply)) {
      Unexpected(reply);
    }
  }
  TalksWithoutEnd();
}

// RFC 5321, 3.3.
Task<> SmtpSession::Transaction(const Envelope& envelope, MessageData& message) {
  if (envelope.inUtf8) RequireUtf8();
  if (capabilities_) {
    co_await ExtendedTransaction(envelope, message);
    co_return;
  }
  Status("Mail from...");
  co_await Mail();
  co_await Recipients(envelope);
  Status("Sending message...");
  co_await Data(message);
  MessageSent();
}

Task<> SmtpSession::Recipients(const Envelope& envelope) {
  Status("Sending recipients...");
  if (!envelope.override.empty()) {
    co_await Recipient(envelope, envelope.override);
    co_return;
  }
  for (const auto& address : envelope.recipients) co_await Recipient(envelope, address);
}

void SmtpSession::MessageSent() {
  Status("Message Sent Successfully");
  LogMilestone("Message sent successfully! ");
  if (refused_.empty()) return;
  Status(SmtpErrorText(internet_error::kSomeRefused));
  throw SessionFailure{internet_error::kSomeRefused, Connection::Stays};
}

Task<> SmtpSession::Mail() {
  const auto mail = "MAIL FROM: <" + sender_ + ">";
  auto reply = co_await Command(mail);
  if (IsRefusal(reply)) {
    // The server may want a greeting first; once. One that closes instead has said why.
    const auto refusal = reply.Code();
    try {
      reply = co_await Hello();
      if (reply.Code() == 220) co_await GreetedAgain();
      if (!reply.IsPositive()) Unexpected(reply);
      reply = co_await Command(mail);
    } catch (const ConnectionLost&) {
      throw SessionFailure{refusal};
    }
  }
  if (!reply.IsPositive()) Unexpected(reply);
}

Task<> SmtpSession::Recipient(const Envelope& envelope, const std::string& address) {
  const bool isOnlyOne = !envelope.override.empty();
  auto path = address;
  for (int forwards = 0;; ++forwards) {
    const auto reply = co_await Command(RecipientCommand(envelope, path));
    if (reply.IsPositive()) co_return;
    if (reply.Code() == 550) {
      refused_.push_back(address);
      if (isOnlyOne) Leave(550);
      co_return;
    }
    if (reply.Code() == 501) {
      refused_.push_back(address);
      Leave(internet_error::kNotLocal);
    }
    if (reply.Code() != 551) Unexpected(reply);
    const auto refusedPath = std::exchange(path, ForwardPath(reply.Text()));
    if (!LeadsOn(refusedPath, path) || forwards == kMostForwards) {
      refused_.push_back(address);
      if (isOnlyOne) Leave(551);
      co_return;
    }
  }
}

Task<> SmtpSession::Data(MessageData& message) {
  auto reply = co_await Command("DATA");
  if (reply.IsPositive()) Invalid("DATA answered without code 354:\n\n", reply.Text());
  if (reply.Code() != 354) Unexpected(reply);
  co_await Text(message);
}

Task<> SmtpSession::Text(MessageData& message) {
  SmtpReply reply;
  StopWaiting();
  LogMilestone("Sending message... ");
  TheReport().OnStep("the end of the message");
  TerminatedMessage outgoing(
      message, [this](Phase phase) { Enter(phase); },
      [&](std::uint64_t bytes) { Progress(bytes, message.Size(), 0); });
  try {
    co_await Write(outgoing);
    AwaitReply();
    reply = co_await Reply();
    if (reply.Code() == 220) co_await GreetedAgain();
  } catch (const ConnectionLost&) {
    throw SessionFailure{outgoing.FailureNumber()};
  }
  if (!reply.IsPositive()) Unexpected(reply);
}

Task<> SmtpSession::Write(TerminatedMessage& message) {
  SmtpReply early;
  const auto* heard = &co_await WriteAll(message);
  while (heard->what == Heard::What::Line) {
    LogHeard("SMTP Rx: ", heard->text);
    if (early.AddLine(heard->text)) {
      NoteReply(early.Lines());
      if (early.Code() == 220 && message.CurrentPhase() == Phase::Terminator) {
        AwaitReply();
        co_await GreetedAgain();
      }
      // An answer before the message is out can only refuse it.
      if (early.IsPositive()) Invalid("Unknown code received from server:\n\n", heard->text);
      Unexpected(early);
    }
    heard = &co_await UntilWritten();
  }
  if (heard->what == Heard::What::Unreadable) throw SessionFailure{message.FailureNumber()};
}

void SmtpSession::Enter(Phase phase) {
  switch (phase) {
    case Phase::Text:
      return;
    case Phase::Alternatives:
      Status("Sending alternatives...");
      return LogMilestone("Sending alternatives... ");
    case Phase::Attachments:
      Status("Sending attachments...");
      return LogMilestone("Sending attachments... ");
    case Phase::Terminator:
      return LogMilestone("Sending terminator... ");
  }
}

// A server need not say whether there is such a name (RFC 5321, 3.5.3).
Task<> SmtpSession::Verify(const std::string& name) {
  const auto reply = co_await Command("VRFY " + name);
  if (reply.IsPositive()) {
    resolved_ = ServerWords(reply.Text());
  } else if (reply.Code() < 400 && reply.Code() != 252) {
    Unexpected(reply);
  }
}

Task<SmtpReply> SmtpSession::Command(std::string line) {
  Say(line);
  auto reply = co_await Reply();
  if (reply.Code() == 220) co_await GreetedAgain();
  co_return reply;
}

Task<SmtpReply> SmtpSession::Reply() {
  SmtpReply reply;
  for (;;) {
    const auto& heard = co_await NextLine();
    LogHeard("SMTP Rx: ", heard.text);
    if (!reply.AddLine(heard.text)) continue;
    NoteReply(reply.Lines());
    co_return reply;
  }
}

// A greeting in the middle of an exchange: the server has lost its place. It is told to reset, and
// what it says to that answers nothing. The wait for an answer goes on, so that it comes to its
// end; this never returns.
Task<> SmtpSession::GreetedAgain() {
  SayMore("RSET");
  for (int evasions = 0; evasions < kMostEvasions; ++evasions) {
    const auto reply = co_await Reply();
    if (reply.Code() == 220) {
      SayMore("RSET");
    } else if (!reply.IsPositive() && !IsRefusal(reply)) {
      Unexpected(reply);
    }
  }
  TalksWithoutEnd();
}

void SmtpSession::TalksWithoutEnd() {
  Log("SMTP: ", "the server says something else than what it is asked, again and again.");
  throw SessionFailure{internet_error::kInvalidSmtpReply};
}

// The number of an exchange that a reply ends.
std::int32_t SmtpSession::NumberOf(const SmtpReply& reply) {
  if (reply.Code() < 400) return internet_error::kInvalidSmtpReply;
  return reply.Code();
}

void SmtpSession::Unexpected(const SmtpReply& reply) {
  if (reply.Code() == 354) Invalid("Response code 354 received without DATA command.");
  if (reply.Code() == 551) Invalid("Error code 551 received without RCPT command.");
  if (reply.Code() < 400) {
    Invalid("Unknown code received from server:\n\n", reply.Lines().back());
  }
  Leave(reply.Code());
}

void SmtpSession::Invalid(std::string_view reason, std::string_view line) {
  LogHeard(reason, line);
  Leave(internet_error::kInvalidSmtpReply);
}

}  // namespace quillon
