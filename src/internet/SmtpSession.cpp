#include "internet/SmtpSession.h"

#include <algorithm>
#include <utility>

#include "internet/InternetErrorText.h"
#include "net/WireText.h"

namespace quillon {

namespace {

constexpr std::int32_t kInvalidResponse = 3;
constexpr std::int32_t kTextFailed = 11;
constexpr std::int32_t kAttachmentsFailed = 12;
constexpr std::int32_t kTerminatorFailed = 13;
constexpr std::int32_t kSomeRefused = 20;
constexpr std::int32_t kConnectionLost = 29;
constexpr std::int32_t kNotLocal = 556;

// A server that forwards for ever would keep the session for ever.
constexpr int kMostForwards = 10;

// What HELO may hold: a host name has no other characters (RFC 5321, 4.1.2).
std::string HostNameText(std::string name) {
  std::erase_if(name, [](char c) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    return !letter && !(c >= '0' && c <= '9') && c != '-' && c != '.';
  });
  return name.empty() ? "localhost" : name;
}

}  // namespace

void SmtpSession::BeginLogin(const SmtpSettings& settings) {
  settings_ = settings;
  operation_ = Operation::Login;
  Begin(settings);
}

void SmtpSession::BeginSend(const SmtpSettings& settings, Envelope envelope, MessageData& message) {
  settings_ = settings;
  envelope_ = std::move(envelope);
  message_ = &message;
  refused_.clear();
  heloOnDemand_ = false;
  operation_ = Operation::Send;
  Begin(settings);
}

void SmtpSession::BeginResolve(const SmtpSettings& settings, const std::string& name) {
  settings_ = settings;
  name_ = name;
  resolved_.clear();
  operation_ = Operation::Resolve;
  Begin(settings);
}

void SmtpSession::BeginLogout() {
  if (!LoginStatus()) return FinishAndClose(kSessionSuccess);
  operation_ = Operation::Logout;
  Begin(settings_, false);
}

void SmtpSession::OnConnected() {
  lastCommand_ = Command::None;
  heloOnDemand_ = false;
}

void SmtpSession::OnReady() {
  switch (operation_) {
    case Operation::None:
    case Operation::Login:
      return Finish(kSessionSuccess);
    case Operation::Send:
      Status("Mail from...");
      return SendMail();
    case Operation::Resolve:
      step_ = Step::Envelope;
      return Send(Command::Vrfy, "VRFY " + name_);
    case Operation::Logout:
      return Send(Command::Quit, "QUIT");
  }
}

void SmtpSession::OnDisconnected() {
  greeted_ = inLongLine_ = false;
  greeting_ = Greeting::None;
  step_ = Step::Idle;
}

std::int32_t SmtpSession::LossNumber() const {
  if (operation_ == Operation::Logout) return kSessionSuccess;
  if (step_ == Step::Attachments) return kAttachmentsFailed;
  if (Writing()) return kTextFailed;
  return step_ == Step::Terminator ? kTerminatorFailed : kConnectionLost;
}

// A reply line that is longer than the socket's buffer is read by its begin.
void SmtpSession::OnReplyLine(std::string_view line, bool complete) {
  if (std::exchange(inLongLine_, !complete)) return;
  if (!Active()) return Log("SMTP Bogus RX: ", line);
  Log("SMTP Rx: ", line);
  const auto reply = ParseSmtpReply(line);
  if (!reply.isContinuation) OnReply(reply, line);
}

void SmtpSession::OnReply(const SmtpReply& reply, std::string_view line) {
  if (lastCommand_ == Command::Quit) return FinishAndClose(kSessionSuccess);
  // An answer before the message is out can only refuse it.
  if (Writing() && reply.code < 400) {
    return Fail(kInvalidResponse, "Unknown code received from server:\n\n", line);
  }
  switch (reply.code) {
    case 220:
      return OnServiceReady();
    case 250:
    case 251:
      return OnPositive(reply);
    case 354:
      return OnDataWanted();
    case 551:
      return OnForward(reply);
    case 550:
      return OnRefused(reply);
    case 501:
      return OnSyntaxError(reply);
    default:
      break;
  }
  if (reply.code >= 400) return OnNegative(reply);
  // 252: the server will not say whether there is such a name (RFC 5321, 3.5.3).
  if (lastCommand_ == Command::Vrfy && reply.code == 252) return Finish(kSessionSuccess);
  Fail(kInvalidResponse, "Unknown code received from server:\n\n", line);
}

void SmtpSession::OnServiceReady() {
  if (greeted_) return OnSecondGreeting();
  greeted_ = true;
  ReplyCame();
  Status("Connected to server...");
  if (settings_.greetWithHelo) {
    Status("Sending HELO...");
    return SendHelo(Greeting::Primary);
  }
  LoggedIn();
  OnReady();
}

// In the middle of an exchange the wait for its reply goes on, so that a server that does nothing
// but greet ends in a time-out.
void SmtpSession::OnSecondGreeting() {
  if (step_ == Step::Idle) return Send(Command::Rset, "RSET");
  lastCommand_ = Command::Rset;
  SendUnawaited("RSET");
}

void SmtpSession::OnPositive(const SmtpReply& reply) {
  if (lastCommand_ == Command::Rset && step_ != Step::Idle) return;  // of a second greeting
  ReplyCame();
  switch (lastCommand_) {
    case Command::Helo:
      if (heloOnDemand_) return SendMail();
      return Send(Command::Rset, "RSET");
    case Command::Rset:
      LoggedIn();
      return OnReady();
    case Command::Mail:
      Status("Sending recipients...");
      refused_.clear();
      cursor_ = 0;
      return NextRecipient();
    case Command::Rcpt:
      return NextRecipient();
    case Command::Data:
      if (step_ == Step::Terminator && !Writer().Busy()) return OnAccepted();
      return Fail(kInvalidResponse, "DATA answered without code 354:\n\n", reply.text);
    case Command::Vrfy:
      resolved_ = reply.text;
      return Finish(kSessionSuccess);
    case Command::None:
    case Command::Quit:
      return Fail(kInvalidResponse, "Unknown code received from server:\n\n", reply.text);
  }
}

void SmtpSession::OnAccepted() {
  step_ = Step::Idle;
  Status("Message Sent Successfully");
  LogMilestone("Message sent successfully! ");
  if (refused_.empty()) return Finish(kSessionSuccess);
  Status(SmtpErrorText(kSomeRefused));
  Finish(kSomeRefused);
}

void SmtpSession::OnDataWanted() {
  ReplyCame();
  if (lastCommand_ != Command::Data) {
    return Fail(kInvalidResponse, "Response code 354 received without DATA command.", {});
  }
  step_ = Step::Text;
  bytesDone_ = 0;
  LogMilestone("Sending message... ");
  Writer().SocketSendData(*this, [this](bool written) {
    if (written) return AwaitReply();
    FinishAndClose(LossNumber());
  });
}

// The message as it goes out, the terminator behind it. A short one leaves in a single write.
DataSource::State SmtpSession::Fill(std::string& block, std::size_t wanted) {
  const auto start = block.size();
  const auto end = start + wanted;
  for (;;) {
    const auto section = message_->Current();
    EnterSection(section);
    const auto state = message_->Fill(block, end - block.size());
    if (state == State::Failed) return state;
    const bool full = block.size() >= end || message_->Current() == section;
    if (state == State::End || full) {
      bytesDone_ += block.size() - start;
      Progress(bytesDone_, message_->Size(), 0);
    }
    if (state == State::End) break;
    if (full) return state;
  }
  LogMilestone("Sending terminator... ");
  step_ = Step::Terminator;
  block += "\r\n.\r\n";
  return State::End;
}

void SmtpSession::EnterSection(MessageData::Section section) {
  using Section = MessageData::Section;
  if (section == Section::Alternatives && step_ == Step::Text) {
    step_ = Step::Alternatives;
    Status("Sending alternatives...");
    LogMilestone("Sending alternatives... ");
  } else if (section == Section::Attachments && step_ != Step::Attachments) {
    step_ = Step::Attachments;
    Status("Sending attachments...");
    LogMilestone("Sending attachments... ");
  }
}

// 551: the recipient is elsewhere, and the reply says where.
void SmtpSession::OnForward(const SmtpReply& reply) {
  switch (lastCommand_) {
    case Command::Helo:
      return GreetOtherwise(reply.code);
    case Command::Rcpt: {
      const auto path = ForwardPath(reply.text);
      if (path.empty() || !IsWireSafe(path)) {
        return Fail(kInvalidResponse, "Error code 551 without an address:\n\n", reply.text);
      }
      if (++forwards_ > kMostForwards) return FinishAndQuit(reply.code);
      return SendRecipient(path);
    }
    case Command::Vrfy:
      return Finish(kSessionSuccess);
    default:
      return Fail(kInvalidResponse, "Error code 551 received without RCPT command.", {});
  }
}

void SmtpSession::OnRefused(const SmtpReply& reply) {
  if (lastCommand_ != Command::Rcpt) return OnNegative(reply);
  refused_.push_back(offered_);
  if (!envelope_.override.empty()) return FinishAndQuit(reply.code);
  NextRecipient();
}

void SmtpSession::OnSyntaxError(const SmtpReply& reply) {
  if (lastCommand_ != Command::Rcpt) return OnNegative(reply);
  refused_.push_back(offered_);
  FinishAndQuit(kNotLocal);
}

void SmtpSession::OnNegative(const SmtpReply& reply) {
  switch (lastCommand_) {
    case Command::Helo:
      return GreetOtherwise(reply.code);
    case Command::Mail:
      // The server may want a greeting first; once.
      if (!std::exchange(heloOnDemand_, true)) return SendHelo(Greeting::Primary);
      return FinishAndQuit(reply.code);
    case Command::Rset:
      return;
    case Command::Vrfy:
      return Finish(kSessionSuccess);
    default:
      return FinishAndQuit(reply.code);
  }
}

void SmtpSession::Send(Command command, std::string_view line) {
  lastCommand_ = command;
  SendCommand(line);
}

void SmtpSession::SendHelo(Greeting greeting) {
  greeting_ = greeting;
  std::string name;
  switch (greeting) {
    case Greeting::None:
    case Greeting::Primary:
      name = HostNameText(Ports().network.LocalHostName());
      break;
    case Greeting::Sender:
      name = settings_.sender;
      break;
    case Greeting::Secondary:
      // An address literal (RFC 5321, 4.1.3): valid for every host.
      name = (Socket().IsIPv6() ? "[IPv6:" : "[") + Socket().LocalAddress() + "]";
      break;
  }
  Send(Command::Helo, "HELO " + name);
}

void SmtpSession::GreetOtherwise(int code) {
  switch (greeting_) {
    case Greeting::None:
    case Greeting::Primary:
      return SendHelo(Greeting::Sender);
    case Greeting::Sender:
      return SendHelo(Greeting::Secondary);
    case Greeting::Secondary:
      return FinishAndQuit(code);
  }
}

void SmtpSession::SendMail() {
  step_ = Step::Envelope;
  Send(Command::Mail, "MAIL FROM: <" + settings_.sender + ">");
}

void SmtpSession::NextRecipient() {
  forwards_ = 0;
  const bool single = !envelope_.override.empty();
  if (cursor_ == (single ? 1 : envelope_.recipients.size())) {
    Status("Sending message...");
    return Send(Command::Data, "DATA");
  }
  offered_ = single ? envelope_.override : envelope_.recipients[cursor_];
  ++cursor_;
  SendRecipient(offered_);
}

void SmtpSession::SendRecipient(std::string_view address) {
  Send(Command::Rcpt, "RCPT TO: <" + std::string(address) + ">");
}

void SmtpSession::Fail(std::int32_t number, std::string_view reason, std::string_view line) {
  Log(reason, line);
  FinishAndQuit(number);
}

}  // namespace quillon
