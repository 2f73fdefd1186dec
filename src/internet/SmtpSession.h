// The SMTP client session (RFC 5321): connect and greet, send one message, verify a name, leave.
//
// Results beside those of MailSession: 20, sent but some recipients were refused; 3, a reply that
// makes no sense here; 29, the server closed the connection (11 while it was taking the text or the
// alternatives, 12 the attachments, 13 while it was answering); 11 and 12 also when the message
// could not be read to its end; else its reply code.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "internet/MailSession.h"
#include "internet/MessageData.h"
#include "internet/SmtpReply.h"

namespace quillon {

struct SmtpSettings : SessionSettings {
  std::string sender;         // bare address
  bool greetWithHelo = true;  // else the greeting of the server is enough
};

struct Envelope {
  std::vector<std::string> recipients;  // bare addresses, at least one
  std::string override;                 // when not empty, the only RCPT TO address
};

class SmtpSession final : private MailSession, private DataSource {
 public:
  explicit SmtpSession(const SessionPorts& ports) : MailSession(ports, "SMTP") {}

  using MailSession::Abort;
  using MailSession::Disconnect;
  using MailSession::Done;
  using MailSession::LoginStatus;
  using MailSession::Result;

  void BeginLogin(const SmtpSettings& settings);
  // `message` gives the header block and the body, without the terminator; it must live until the
  // session is done.
  void BeginSend(const SmtpSettings& settings, Envelope envelope, MessageData& message);
  void BeginResolve(const SmtpSettings& settings, const std::string& name);
  void BeginLogout();

  // Of the last message: what the server would not take.
  const std::vector<std::string>& RefusedRecipients() const noexcept { return refused_; }
  void ForgetRefusedRecipients() { refused_.clear(); }
  // Of the last BeginResolve; empty when the server does not know the name.
  const std::string& Resolved() const noexcept { return resolved_; }

 private:
  enum class Operation { None, Login, Send, Resolve, Logout };
  enum class Command { None, Helo, Rset, Mail, Rcpt, Data, Vrfy, Quit };
  enum class Step { Idle, Envelope, Text, Alternatives, Attachments, Terminator };
  enum class Greeting { None, Primary, Sender, Secondary };  // the name that the last HELO offered

  void OnConnected() override;
  void OnReady() override;
  void OnReplyLine(std::string_view line, bool complete) override;
  void OnDisconnected() override;
  std::int32_t LossNumber() const override;
  State Fill(std::string& block, std::size_t wanted) override;

  void OnReply(const SmtpReply& reply, std::string_view line);
  void OnServiceReady();
  void OnSecondGreeting();
  void OnPositive(const SmtpReply& reply);
  void OnDataWanted();
  void EnterSection(MessageData::Section section);
  bool Writing() const { return step_ >= Step::Text && step_ <= Step::Attachments; }
  void OnForward(const SmtpReply& reply);
  void OnRefused(const SmtpReply& reply);
  void OnNegative(const SmtpReply& reply);
  void OnSyntaxError(const SmtpReply& reply);
  void OnAccepted();

  void Send(Command command, std::string_view line);
  void SendHelo(Greeting greeting);
  void SendMail();
  void SendRecipient(std::string_view address);
  void NextRecipient();
  void GreetOtherwise(int code);
  void Fail(std::int32_t number, std::string_view reason, std::string_view line);

  SmtpSettings settings_;
  Operation operation_ = Operation::None;
  Command lastCommand_ = Command::None;
  Step step_ = Step::Idle;
  Greeting greeting_ = Greeting::None;
  bool greeted_ = false;       // by the server, on this connection
  bool heloOnDemand_ = false;  // MAIL was refused once in this operation for want of a HELO
  bool inLongLine_ = false;
  Envelope envelope_;
  std::size_t cursor_ = 0;  // recipients offered
  std::string offered_;     // the last of them
  int forwards_ = 0;        // followed in a row
  std::vector<std::string> refused_;
  std::string name_;
  std::string resolved_;
  MessageData* message_ = nullptr;
  std::uint64_t bytesDone_ = 0;  // of it
};

}  // namespace quillon
