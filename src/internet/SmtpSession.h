// The SMTP client session (RFC 5321): connect and greet, send one message, verify a name, leave.
//
// Results beside those of MailSession: 20, sent but some recipients were refused; 3, a reply that
// makes no sense here; 11 while the text or the alternatives were written, 12 the attachments, 13
// while the server was answering to them: the connection was lost, or (11, 12) the message could
// not be read on; 556, a recipient that the server calls not local; else the reply code.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "internet/MailSession.h"
#include "internet/SmtpReply.h"
#include "internet/TerminatedMessage.h"

namespace quillon {

struct SmtpSettings : SessionSettings {
  std::string sender;         // bare address
  bool greetWithHelo = true;  // else the greeting of the server is enough
};

struct Envelope {
  std::vector<std::string> recipients;  // bare addresses, at least one
  std::string override;                 // when not empty, the only RCPT TO address
};

class SmtpSession final : private MailSession {
 public:
  explicit SmtpSession(const SessionPorts& ports) : MailSession(ports, "SMTP") {}

  using MailSession::LoginStatus;

  Task<SessionResult> Login(SmtpSettings settings);
  // `message` gives the header block and the body, without the terminator; it must live as long as
  // the operation.
  Task<SessionResult> Send(SmtpSettings settings, Envelope envelope, MessageData& message);
  Task<SessionResult> Resolve(SmtpSettings settings, std::string name);
  // Says QUIT and closes; nothing that the server might answer to that matters any more.
  using MailSession::TakeLeave;

  // Of the last message: what the server would not take.
  const std::vector<std::string>& RefusedRecipients() const noexcept { return refused_; }
  void ForgetRefusedRecipients() { refused_.clear(); }
  // Of the last Resolve; empty when the server does not know the name.
  const std::string& Resolved() const noexcept { return resolved_; }

 private:
  using Phase = TerminatedMessage::Phase;

  Task<> LogIn() override;
  Task<SmtpReply> Hello();
  Task<> Reset();
  Task<> Transaction(const Envelope& envelope, MessageData& message);
  Task<> Mail();
  Task<> Recipient(const std::string& address, bool isOnlyOne);
  Task<> Data(MessageData& message);
  Task<> Write(TerminatedMessage& message);
  Task<> Verify(const std::string& name);

  // A command of an exchange, and its reply.
  Task<SmtpReply> Command(std::string line);
  Task<SmtpReply> Reply();
  Task<> GreetedAgain();

  void Enter(Phase phase);
  // Ends the operation for a reply that the command has no use for.
  [[noreturn]] void Unexpected(const SmtpReply& reply);
  [[noreturn]] void TalksWithoutEnd();
  [[noreturn]] void Invalid(std::string_view reason, std::string_view line = {});

  std::string sender_;
  bool greetWithHelo_ = true;
  std::vector<std::string> refused_;
  std::string resolved_;
};

}  // namespace quillon
