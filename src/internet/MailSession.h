// What the SMTP and the POP3 session share: the connection, the waiting for replies, and how a
// dialogue ends.
//
// A session's operation is a Task that reads like the dialogue of its RFC: say something, await the
// reply, decide. One operation at a time. What ends a dialogue early is thrown inside it as a
// SessionFailure; the operation's result is always a SessionResult, with -1 for success, a reply
// code, or a number of the protocol's error table. Those that both protocols share:
//   2, 4   no connection (SocketConnect)
//   27     no reply within TimeoutProtocol, or less of a long one than a slow line brings in that
//          time, or no login within TimeoutConnect
//   28     nothing could be written for the send time-out
//   29     the connection was lost
//   30     more data than there is room for
//   40     the server's certificate was refused, 41 it offers no encryption, 42 the handshake
//   failed 43     the server refused the login, 44 there is no method for it, 45 no access token
// After any of them, and when the operation is destroyed where it waits, the connection is closed,
// so that the next operation starts with a fresh one.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/ServerWords.h"
#include "core/Task.h"
#include "internet/DataRate.h"
#include "internet/InternetError.h"
#include "internet/ProtocolLog.h"
#include "internet/ServerSecurity.h"
#include "internet/SessionListener.h"
#include "internet/SessionLogin.h"
#include "internet/SessionReport.h"
#include "net/LineSocket.h"
#include "net/SecureConnect.h"
#include "net/SocketConnect.h"
#include "net/SocketWriter.h"
#include "ports/LocalClock.h"

namespace quillon {

// For servers of today. What checks certificates lives as long as the process.
struct SecurityPorts {
  TlsLibrary& tls;
  const Crypto& crypto;
  AccessTokens& tokens;
  BackgroundRunner runInBackground;
  const SystemLogin* systemLogin = nullptr;  // null where the system makes no logins
};

struct SessionPorts {
  EventLoop& loop;
  Network& network;
  const LocalClock& clock;
  ProtocolLog& log;
  SessionListener& listener;
  SecurityPorts security;
};

// Where to connect, and how long to wait, in milliseconds.
struct SessionSettings {
  std::string host;
  std::uint16_t port = 0;
  TickCount timeoutConnect = 30000;
  TickCount timeoutProtocol = 10000;
  TickCount timeoutSend = 9000;  // of a blocked write
  ServerSecurity security;

  bool SameServer(const SessionSettings& other) const {
    return host == other.host && port == other.port && security == other.security;
  }
};

struct SessionResult {
  std::int32_t number = internet_error::kSuccess;
  std::string words;        // the server's, for a number that stands for them
  std::string detail = {};  // as MailResult has it
};

// Ends a dialogue.
struct SessionFailure {
  // What becomes of the connection.
  enum class Connection { Stays, TakesLeave, IsClosed };

  explicit SessionFailure(std::int32_t why, Connection then = Connection::IsClosed,
                          std::string said = {}, std::string more = {})
      : number(why), connection(then), words(std::move(said)), detail(std::move(more)) {}

  std::int32_t number;
  Connection connection;
  std::string words;
  std::string detail;  // where the last reply does not tell it all
};

// The server closed the connection, or it broke.
struct ConnectionLost : SessionFailure {
  ConnectionLost() : SessionFailure(internet_error::kConnectionLost) {}
};

class MailSession : private LineSocket::Handler {
 public:
  ~MailSession() override = default;
  MailSession(const MailSession&) = delete;
  MailSession& operator=(const MailSession&) = delete;

  bool LoginStatus() const noexcept { return loggedIn_; }
  const SessionReport& Report() const noexcept { return report_; }

  // Takes note of what came while nothing was under way, most of all, that the server has hung up.
  void TakeNote() { socket_.Poll(); }

  // Says QUIT without waiting for the answer, unless data is still on its way, and closes.
  void TakeLeave();

 protected:
  // What has been waited for: a line or a piece of a very long one, whose text lives until the next
  // wait; or the end of what was being written.
  struct Heard {
    enum class What { Line, Written, Unreadable };  // the last: the source failed

    What what = What::Line;
    std::string_view text;
    bool starts = true;     // the piece is the first one of its line
    bool completes = true;  // and the last one
  };
  class Wait;
  using Dialogue = std::function<Task<>()>;

  // `name` is "SMTP" or "POP".
  MailSession(const SessionPorts& ports, std::string_view name);

  // Runs a dialogue on the session that is there, or logs in for it. When the server has given the
  // old connection up without answering to the dialogue, it is begun once more on a new one.
  Task<SessionResult> Converse(SessionSettings settings, Dialogue dialogue);
  // Runs the dialogue that ends the session. The connection is closed whatever comes of it.
  Task<SessionResult> Part(Dialogue dialogue);

  // Writes a command and starts the clock for its reply. `logged` is what the log shows of it, when
  // that differs. SayMore leaves the clock as it is.
  void Say(std::string_view line, std::string_view logged = {});
  void SayMore(std::string_view line, std::string_view logged = {});

  // Writes several commands at once and starts the clock for the first reply. Whoever awaits the
  // replies says which command each belongs to (TheReport).
  void SayAll(const std::vector<std::string>& lines);

  // Each wait gives what was heard, which stays until the next one, or throws SessionFailure.
  // The next line that starts, before the clock that AwaitReply starts has run out.
  Wait NextLine();
  // The next line or piece of data, behind AwaitData; each read starts the clock anew, and too
  // little data in the time of the clock is as none.
  Wait NextData();
  // Writes all of the source, which must live until then. A line that starts is given first; then
  // UntilWritten goes on with the wait.
  Wait WriteAll(DataSource& source);
  Wait UntilWritten();
  void AwaitReply() { protocolTimer_.Start(settings_.timeoutProtocol); }
  void AwaitData();
  void StopWaiting() { protocolTimer_.Stop(); }

  void LoggedIn();

  // Secures the connection that is there, behind the server's word that it may be, and forgets what
  // the server has said.
  Task<> StartTls();
  bool IsSecured() const noexcept { return secured_; }
  // What the settings ask for has not been offered, or will not come about: 41 or 42.
  [[noreturn]] static void NotSecured(std::int32_t number, std::string why);

  // A login with what the settings have, by a mechanism that both sides know; false when there is
  // none. Throws 45.
  Task<bool> PrepareLogin(SessionLogin& login, std::vector<std::string> offered, LoginRules rules,
                          std::size_t longestCommand);
  // Ends the operation with 44 and all that was in the way.
  // What is in the way of a login method, as a sentence for NoCommonLogin.
  void NoteObjection(std::string_view sentence);
  [[noreturn]] void NoCommonLogin();
  Credentials LoginCredentials() const { return settings_.security.credentials; }
  ConnectionFacts LoginConnection() const;
  // Says a line of it.
  void SayOfLogin(const ExchangeLine& line);
  // Why it has failed, behind what the server has said: 43.
  [[noreturn]] void LoginRefused(std::string_view reason, SessionFailure::Connection connection);

  void Log(std::string_view prefix, std::string_view text = {}) {
    ports_.log.WriteDebug(prefix, text);
  }
  // What the server has said.
  void LogHeard(std::string_view prefix, std::string_view text) {
    if (ports_.log.IsOpen()) Log(prefix, WithoutSecrets(text));
  }
  // What no log and no error text may hold, also when the server says it; on this connection.
  void KeepSecret(std::string_view secret);
  std::string WithoutSecrets(std::string_view text) const;
  void NoteReply(const std::vector<std::string>& lines);
  // With the current date and time in front.
  void LogMilestone(std::string_view text);
  void Status(std::string_view text) { ports_.listener.OnStatus(text); }
  void Progress(std::uint64_t done, std::uint64_t total, std::uint32_t message) {
    ports_.listener.OnProgress(done, total, message);
  }

  bool IsWith(const SessionSettings& settings) const { return settings.SameServer(settings_); }
  const SessionSettings& Settings() const noexcept { return settings_; }
  SessionReport& TheReport() noexcept { return report_; }
  const LineSocket& Socket() const noexcept { return socket_; }
  const SessionPorts& Ports() const noexcept { return ports_; }

 private:
  class Closing;

  // A session is about to begin. Throws what is to be told first of the one before.
  virtual void BeforeConnecting() {}
  // From the greeting to LoggedIn.
  virtual Task<> LogIn() = 0;

  Task<> OnSession(const Dialogue& dialogue);
  Task<> Connect();
  void OnConnectResult(std::unique_ptr<ByteStream> stream, std::int32_t code);
  Task<> Secure(std::unique_ptr<ByteStream> stream);
  void OnSecureResult(SecureConnect::Result result);
  void LogSecured(const TlsFacts& facts);
  Task<> ObtainToken();
  bool TakeData();
  void OnLine(std::string_view text, bool complete) override;
  void OnLinesRead() override;
  void OnUnfinishedLine(std::string_view text) override;
  void OnSendReady() override { writer_.OnSendReady(); }
  void OnClosed(int error) override;
  void OnUnasked(std::string_view text, bool starts);
  void OnSilence();
  // Ends the wait that is on, if any, with an exception.
  template <typename Failure>
  void Fail(const Failure& failure);
  void CloseConnection();
  // The system's number of the error, and its text.
  void LogException(int error);

  SessionPorts ports_;
  std::string name_;
  SessionSettings settings_;
  std::vector<std::string> secrets_;
  SessionReport report_;
  SocketConnect connect_;
  std::unique_ptr<ByteStream> plain_;  // connected, and not in use yet
  SecureConnect secure_;
  bool secured_ = false;
  ChannelBinding binding_;
  std::string endPoint_;  // what tls-server-end-point binds to, empty without
  std::unique_ptr<AccessTokens::Request> tokenRequest_;
  AccessToken token_;       // of OAuth, for this connection
  std::string objections_;  // to the mechanisms that there are
  LineSocket socket_;
  SocketWriter writer_;
  Timer protocolTimer_;  // ProtocolTimer: the reply to the last command
  DataRate dataRate_;
  Timer loginTimer_;  // tmrLoginTimer: the login as a whole
  Wait* wait_ = nullptr;
  Heard heard_;                  // last
  std::optional<bool> written_;  // how the writing has ended, until somebody has waited for that
  bool inLongLine_ = false;
  bool loggedIn_ = false;
  int unasked_ = 0;        // lines of this connection that nobody waited for
  bool answered_ = false;  // the server has said something since the dialogue began
};

// At most one at a time; destroyed while it waits, it is forgotten.
class MailSession::Wait {
 public:
  enum class For { Connection, Line, Data, Writing };

  Wait(MailSession& session, For what) noexcept : session_(session), what_(what) {}
  ~Wait() {
    if (session_.wait_ == this) session_.wait_ = nullptr;
  }
  Wait(const Wait&) = delete;
  Wait& operator=(const Wait&) = delete;

  bool Is(For what) const noexcept { return what_ == what; }
  void End();
  void Fail(std::exception_ptr failure);

  // Data that has come already is not waited for: a message may have millions of lines.
  bool await_ready() {
    if (what_ == For::Data) return session_.TakeData();
    return what_ == For::Writing && session_.written_;
  }
  template <typename Promise>
  void await_suspend(std::coroutine_handle<Promise> waiting) {
    suspended_ = Suspended(waiting);
    session_.wait_ = this;
  }
  Heard& await_resume() const;

 private:
  MailSession& session_;
  const For what_;
  Suspended suspended_;
  std::exception_ptr failure_;
};

template <typename Failure>
void MailSession::Fail(const Failure& failure) {
  if (wait_ != nullptr) wait_->Fail(std::make_exception_ptr(failure));
}

}  // namespace quillon
