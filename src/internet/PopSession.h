// The POP3 client session (RFC 1939): login, headers, identifiers, one message, deletion, leave.
//
// Results beside those of MailSession: the numbers of the POP error table. A refused command leaves
// the session as it is; the server's own words are kept as LastErrorDescription. A connection that
// is lost is 29, a reply that makes no sense 4 or 6, more data than can be taken 30. Deletions
// become final when the session ends with QUIT, and only then.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>

#include "internet/MailSession.h"

namespace quillon {

struct PopSettings : SessionSettings {
  std::string loginName;
  std::string password;

  bool SameAccount(const PopSettings& other) const {
    return loginName == other.loginName && password == other.password;
  }
};

// Takes headers and identifiers as they arrive. Lines have no line end, and their dots are
// unstuffed; a very long one comes in pieces, of which the last is complete.
class HeaderSink {
 public:
  virtual ~HeaderSink() = default;
  // False when there is no room for so much: the operation ends with 30.
  virtual bool OnHeaderLine(std::uint32_t number, std::string_view text, bool complete) = 0;
  // The header of this message is whole. False: enough.
  virtual bool OnHeaderEnd(std::uint32_t number) = 0;
  // The command after that header is on its way: what need not be done before it goes on while the
  // server works.
  virtual void OnNextRequested() = 0;
  virtual void OnIdentifier(std::uint32_t number, std::string_view identifier) = 0;
};

// Takes a message as it arrives.
class MessageSink {
 public:
  virtual ~MessageSink() = default;
  // A line, without its end and with its dots unstuffed; a very long one comes in pieces, of which
  // the last is complete. A result other than 0 ends the operation with that number.
  virtual std::int32_t OnMessageLine(std::string_view text, bool complete) = 0;
  // Whether that line belongs to an attachment.
  virtual bool InAttachment() const = 0;
  // The message is whole. A result other than 0 is that of the operation.
  virtual std::int32_t OnMessageEnd() = 0;
};

struct HeaderRequest {
  enum class Kind { All, Single, Identifiers };

  Kind kind = Kind::All;
  std::uint32_t number = 1;  // of the message, for Single
};

class PopSession final : private MailSession {
 public:
  explicit PopSession(const SessionPorts& ports) : MailSession(ports, "POP") {}

  using MailSession::Abort;
  using MailSession::Disconnect;
  using MailSession::Done;
  using MailSession::LoginStatus;
  using MailSession::Result;

  void BeginLogin(const PopSettings& settings);
  // Sinks must live until the session is done.
  void BeginHeaders(const PopSettings& settings, const HeaderRequest& request, HeaderSink& sink);
  void BeginMessage(const PopSettings& settings, std::uint32_t number, MessageSink& sink);
  void BeginDelete(const PopSettings& settings, std::uint32_t number);
  void BeginLogout();

  const std::string& LastErrorDescription() const noexcept { return lastError_; }

 private:
  enum class Operation { None, Login, Headers, Message, Delete, Logout };
  enum class Command { None, User, Pass, Stat, Uidl, Top, Retr, Dele, Quit };

  void OnConnected() override { lastCommand_ = Command::None; }
  void OnReady() override;
  void OnReplyLine(std::string_view line, bool complete) override;
  void OnLinesRead() override;
  void OnDisconnected() override;
  std::int32_t LossNumber() const override;

  void Start(const PopSettings& settings, Operation operation);
  void OnPositive(std::string_view text);
  void OnNegative(std::string_view text, std::string_view line);
  void OnStatistics(std::string_view text);
  void OnData(std::string_view line, bool complete);
  void OnDataEnd();
  void OnMessageData(std::string_view line, bool complete);
  void OnMessageEnd();
  void OnIdentifierData(std::string_view line);
  void NextHeader();
  void Send(Command command, std::string_view line, std::string_view logged = {});

  PopSettings settings_;
  Operation operation_ = Operation::None;
  Command lastCommand_ = Command::None;
  std::string lastError_;

  bool dataMode_ = false;    // in the lines of a multi-line reply
  bool inLongLine_ = false;  // and in the middle of one that comes in pieces
  std::uint64_t dataBytes_ = 0;
  std::uint64_t dataSize_ = 0;      // of the message, as the server tells it; 0 when it does not
  std::uint64_t nextProgress_ = 0;  // bytes of it that are worth another word
  bool inHeader_ = false;           // of the message that TOP shows
  bool hasAttachments_ = false;     // the message being received, as far as it has come

  HeaderRequest request_;
  HeaderSink* headers_ = nullptr;
  MessageSink* message_ = nullptr;
  std::uint32_t number_ = 0;         // of the message being read or deleted
  std::uint64_t lastNumber_ = 0;     // of the mailbox
  std::set<std::uint32_t> deleted_;  // in this session
};

}  // namespace quillon
