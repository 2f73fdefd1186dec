// What the SMTP and the POP3 session share: the connection, the waiting for replies, and how an
// operation ends.
//
// A session works by events alone. An operation is begun, takes each step when the reply to the one
// before arrives, and is done with a result; whoever wants to wait runs the loop until Done(). One
// operation at a time. Results: -1 success, a reply code, or a number of the protocol's error
// table:
//   2, 4   no connection (SocketConnect)        27   no reply within TimeoutProtocol, or no login
//   within TimeoutConnect 28     nothing could be written for the send time-out     522   aborted
// After any of them the connection is closed, so that the next operation starts with a fresh one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "internet/ProtocolLog.h"
#include "internet/SessionListener.h"
#include "net/LineSocket.h"
#include "net/SocketConnect.h"
#include "net/SocketWriter.h"
#include "ports/LocalClock.h"

namespace quillon {

inline constexpr std::int32_t kSessionSuccess = -1;

struct SessionPorts {
  EventLoop& loop;
  Network& network;
  const LocalClock& clock;
  ProtocolLog& log;
  SessionListener& listener;
};

// Where to connect, and how long to wait, in milliseconds.
struct SessionSettings {
  std::string host;
  std::uint16_t port = 0;
  TickCount timeoutConnect = 30000;
  TickCount timeoutProtocol = 10000;
  TickCount timeoutSend = 9000;  // of a blocked write
};

class MailSession : private LineSocket::Handler {
 public:
  ~MailSession() override = default;
  MailSession(const MailSession&) = delete;
  MailSession& operator=(const MailSession&) = delete;

  bool Done() const noexcept { return done_; }
  std::int32_t Result() const noexcept { return result_; }
  bool LoginStatus() const noexcept { return loggedIn_; }

  // Ends the running operation with 522.
  void Abort();

  // Closes the connection without a word. The running operation, if any, ends with 29.
  void Disconnect();

 protected:
  // `name` is "SMTP" or "POP".
  MailSession(const SessionPorts& ports, std::string_view name);

  // Starts an operation on the connection that is there, or on a new one. When the server has given
  // the old connection up without answering to the operation, a new one is made if `mayReconnect`.
  void Begin(const SessionSettings& settings, bool mayReconnect = true);

  // Writes a command whose reply is awaited. `logged` is what the log shows of it, when that
  // differs.
  void SendCommand(std::string_view line, std::string_view logged = {});
  // Without starting a wait, while one is on.
  void SendUnawaited(std::string_view line, std::string_view logged = {});
  void AwaitReply();
  void ReplyCame() { protocolTimer_.Stop(); }
  void LoggedIn();

  // Ends the operation; the connection stays.
  void Finish(std::int32_t result);
  // Ends the operation and takes leave of the server without waiting for its answer, unless data is
  // on its way still.
  void FinishAndQuit(std::int32_t result);
  // Ends the operation and closes the connection.
  void FinishAndClose(std::int32_t result);

  bool Active() const noexcept { return !done_; }
  bool Connected() const noexcept { return socket_.IsOpen(); }
  void Log(std::string_view prefix, std::string_view text = {}) {
    ports_.log.WriteDebug(prefix, text);
  }
  // With the current date and time in front.
  void LogMilestone(std::string_view text);
  void Status(std::string_view text) { ports_.listener.OnStatus(text); }
  void Progress(std::uint64_t done, std::uint64_t total, std::uint32_t message) {
    ports_.listener.OnProgress(done, total, message);
  }

  LineSocket& Socket() noexcept { return socket_; }
  SocketWriter& Writer() noexcept { return writer_; }
  const SessionPorts& Ports() const noexcept { return ports_; }

 private:
  // The connection has been made: wait for the greeting.
  virtual void OnConnected() = 0;
  // The session is logged in already: take the first step of the operation.
  virtual void OnReady() = 0;
  virtual void OnReplyLine(std::string_view line, bool complete) = 0;
  // The connection is gone or going: forget what belonged to it.
  virtual void OnDisconnected() = 0;
  // The number for a connection that the server closed in the middle of the operation.
  virtual std::int32_t LossNumber() const = 0;

  // The system's number of the error, and its text.
  void LogException(int error);
  void Connect();
  void OnConnectResult(std::unique_ptr<ByteStream> stream, std::int32_t code);
  void OnLine(std::string_view text, bool complete) override;
  void OnUnfinishedLine(std::string_view text) override;
  void OnSendReady() override { writer_.OnSendReady(); }
  void OnClosed(int error) override;
  void OnSilence();
  void CloseConnection();

  SessionPorts ports_;
  std::string name_;
  SessionSettings settings_;
  SocketConnect connect_;
  LineSocket socket_;
  SocketWriter writer_;
  Timer protocolTimer_;  // ProtocolTimer: the reply to the last command
  Timer loginTimer_;     // tmrLoginTimer: the login as a whole
  bool loggedIn_ = false;
  bool done_ = true;
  bool mayReconnect_ = false;  // the operation began on an older connection
  bool heard_ = false;         // and the server has said something since
  std::int32_t result_ = kSessionSuccess;
};

}  // namespace quillon
