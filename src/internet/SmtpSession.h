// The SMTP client session (RFC 5321): connect and greet, send one message, verify a name, leave.
//
// Results beside those of MailSession: 20, sent but some recipients were refused; 3, a reply that
// makes no sense here; 46, it takes no addresses in UTF-8; 11 while the text or the alternatives
// were written, 12 the attachments, 13 while the server was answering to them: the connection was
// lost, or (11, 12) the message could not be read on; 556, a recipient that the server calls not
// local; else the reply code.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "internet/MailSession.h"
#include "internet/SmtpCapabilities.h"
#include "internet/SmtpReply.h"
#include "internet/TerminatedMessage.h"

namespace quillon {

struct SmtpSettings : SessionSettings {
  std::string sender;          // bare address
  std::string envelopeSender;  // when not empty, that of MAIL FROM instead
  bool greetWithHelo = true;   // else the greeting of the server is enough
};

struct Envelope {
  std::vector<std::string> recipients;  // bare addresses, at least one
  std::string override;                 // when not empty, the only RCPT TO address
  std::string notify;                   // NOTIFY of RFC 3461; empty: as the server sees fit
  bool inUtf8 = false;                  // some addresses are not ASCII
};

// A server that forwards for ever would keep the session for ever.
inline constexpr int kMostForwards = 10;

class SmtpSession final : private MailSession {
 public:
  explicit SmtpSession(const SessionPorts& ports) : MailSession(ports, "SMTP") {}

  using MailSession::LoginStatus;
  using MailSession::Report;

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

  // A recipient, and where the server has sent us for it.
  struct Path {
    std::string recipient;
    std::string path;
  };

  void Take(const SmtpSettings& settings);
  Task<> LogIn() override;
  // With what servers of today ask for (SmtpLogin.cpp).
  Task<> ExtendedLogIn();
  Task<> ExtendedHello();
  Task<> Authenticate();
  std::array<std::string, 3> OwnNames() const;
  Task<SmtpReply> Hello();
  Task<> Reset();
  Task<> Transaction(const Envelope& envelope, MessageData& message);
  Task<> Mail();
  Task<> Recipient(const Envelope& envelope, const std::string& address);
  Task<> Recipients(const Envelope& envelope);
  // With what the server has said that it can do (SmtpTransaction.cpp).
  Task<> ExtendedTransaction(const Envelope& envelope, MessageData& message);
  void RequireRoom(const MessageData& message);
  void RequireUtf8();
  std::string MailCommand(const Envelope& envelope, const MessageData& message) const;
  std::string RecipientCommand(const Envelope& envelope, const std::string& path) const;
  Task<> StepByStep(const Envelope& envelope, MessageData& message);
  Task<> Pipelined(const Envelope& envelope, MessageData& message);
  // One transaction; gives the recipients that the server wants to have elsewhere.
  Task<std::vector<Path>> AllAtOnce(const Envelope& envelope, std::vector<Path> paths,
                                    MessageData& message, bool isLast);
  void SayEnvelope(const Envelope& envelope, const std::string& mail, std::span<const Path> paths,
                   bool isEnd);
  void RecipientRefused(const SmtpReply& reply, const std::string& recipient, bool isOnlyOne);
  Task<> TextForAccepted(MessageData& message, std::size_t accepted, bool othersFollow);
  Task<> SayNothing();
  Task<SmtpReply> ReplyTo(std::string command);
  Task<> Data(MessageData& message);
  Task<> Text(MessageData& message);
  void MessageSent();
  Task<> Write(TerminatedMessage& message);
  Task<> Verify(const std::string& name);

  // A command of an exchange, and its reply.
  Task<SmtpReply> Command(std::string line);
  Task<SmtpReply> Reply();
  Task<> GreetedAgain();

  void Enter(Phase phase);
  static std::int32_t NumberOf(const SmtpReply& reply);
  // Ends the operation for a reply that the command has no use for.
  [[noreturn]] void Unexpected(const SmtpReply& reply);
  [[noreturn]] void TalksWithoutEnd();
  [[noreturn]] void Invalid(std::string_view reason, std::string_view line = {});

  std::string sender_;
  bool greetWithHelo_ = true;
  std::optional<SmtpCapabilities> capabilities_;  // when the server was asked, and has answered
  std::vector<std::string> refused_;
  std::string resolved_;
};

}  // namespace quillon
