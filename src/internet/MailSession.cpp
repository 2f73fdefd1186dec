#include "internet/MailSession.h"

#include <exception>
#include <new>
#include <system_error>
#include <utility>

namespace quillon {

namespace {

// Of the lines that a connection brings without having been asked, and the pieces of long ones.
constexpr int kMostUnasked = 5;

// The system has no error for a host that just does not answer.
std::string ErrorWords(int error) {
  return error == 0 ? "no answer in time" : std::system_category().message(error);
}

}  // namespace

// Closes the connection when the frame that holds it goes, unless the session is kept.
class MailSession::Closing {
 public:
  explicit Closing(MailSession& session) : session_(&session) {}
  ~Closing() {
    if (session_ != nullptr) session_->CloseConnection();
  }
  Closing(const Closing&) = delete;
  Closing& operator=(const Closing&) = delete;
  void Keep() noexcept { session_ = nullptr; }

 private:
  MailSession* session_;
};

void MailSession::Wait::End() {
  session_.wait_ = nullptr;
  suspended_.Resume();
}

void MailSession::Wait::Fail(std::exception_ptr failure) {
  session_.wait_ = nullptr;
  failure_ = std::move(failure);
  suspended_.Resume();
}

MailSession::Heard& MailSession::Wait::await_resume() const {
  if (failure_) std::rethrow_exception(failure_);
  if (what_ == For::Writing && session_.written_) {
    const bool whole = *std::exchange(session_.written_, std::nullopt);
    session_.heard_.what = whole ? Heard::What::Written : Heard::What::Unreadable;
  }
  return session_.heard_;
}

MailSession::MailSession(const SessionPorts& ports, std::string_view name)
    : ports_(ports),
      name_(name),
      connect_(ports.loop, ports.network),
      secure_(ports.loop, ports.security.tls, ports.security.crypto,
              ports.security.runInBackground),
      socket_(ports.loop, *this),
      writer_(ports.loop, socket_,
              [this] {
                Log("Network timeout on send.");
                Fail(SessionFailure{internet_error::kSendTimedOut});
              }),
      protocolTimer_(ports.loop, [this] { OnSilence(); }),
      dataRate_(ports.loop),
      loginTimer_(ports.loop, [this] { OnSilence(); }) {}

Task<SessionResult> MailSession::Converse(SessionSettings settings, Dialogue dialogue) {
  using Connection = SessionFailure::Connection;
  TakeNote();
  if (!loggedIn_ || !IsWith(settings)) TakeLeave();
  settings_ = std::move(settings);
  report_.OnOperation();
  writer_.SetTimeout(settings_.timeoutSend);
  Closing closing(*this);
  SessionResult result;
  auto connection = Connection::Stays;
  try {
    co_await OnSession(dialogue);
  } catch (const SessionFailure& failure) {
    result = {failure.number, failure.words, failure.detail};
    if (result.detail.empty()) result.detail = report_.Detail(failure.number);
    connection = failure.connection;
  } catch (const std::bad_alloc&) {
    result.number = internet_error::kOverflow;
    connection = Connection::IsClosed;
  }
  protocolTimer_.Stop();
  loginTimer_.Stop();
  if (connection == Connection::TakesLeave) TakeLeave();
  if (connection == Connection::Stays) closing.Keep();
  co_return result;
}

Task<> MailSession::OnSession(const Dialogue& dialogue) {
  if (loggedIn_) {
    answered_ = false;
    try {
      co_await dialogue();
      co_return;
    } catch (const ConnectionLost&) {
      // The server had given the idle connection up before it could hear of this dialogue: nothing
      // has been done yet, so it can begin again.
      if (answered_) throw;
    }
  }
  BeforeConnecting();
  co_await Connect();
  co_await LogIn();
  co_await dialogue();
}

Task<SessionResult> MailSession::Part(Dialogue dialogue) {
  TakeNote();
  const Closing closing(*this);
  SessionResult result;
  if (!loggedIn_) co_return result;
  report_.OnOperation();
  try {
    co_await dialogue();
  } catch (const SessionFailure& failure) {
    result = {failure.number, failure.words, report_.Detail(failure.number)};
  }
  co_return result;
}

Task<> MailSession::Connect() {
  LogMilestone("Attempting to connect... ");
  report_.OnConnecting(settings_.host, settings_.port);
  secrets_.clear();
  token_ = {};
  objections_.clear();
  KeepSecret(settings_.security.credentials.password);
  KeepSecret(settings_.security.credentials.accessToken);
  connect_.Start(settings_.host, settings_.port, settings_.timeoutConnect,
                 [this](std::unique_ptr<ByteStream> stream, std::int32_t code) {
                   OnConnectResult(std::move(stream), code);
                 });
  co_await Wait(*this, Wait::For::Connection);
  report_.OnConnected(connect_.Address());
  loginTimer_.Start(settings_.timeoutConnect);
  if (settings_.security.connection == ConnectionSecurity::Tls) {
    co_await Secure(std::move(plain_));
  } else {
    socket_.Attach(std::move(plain_));
  }
  AwaitReply();
}

void MailSession::OnConnectResult(std::unique_ptr<ByteStream> stream, std::int32_t code) {
  if (stream == nullptr) {
    LogException(connect_.LastError());
    report_.OnNoConnection(ErrorWords(connect_.LastError()));
    return Fail(SessionFailure{code});
  }
  plain_ = std::move(stream);
  wait_->End();
}

void MailSession::Say(std::string_view line, std::string_view logged) {
  AwaitReply();
  SayMore(line, logged);
}

void MailSession::SayMore(std::string_view line, std::string_view logged) {
  if (!socket_.IsOpen()) throw ConnectionLost();
  if (!writer_.WriteCommand(line)) throw SessionFailure{internet_error::kConnectionLost};
  const auto shown = logged.empty() ? line : logged;
  report_.OnCommand(shown);
  Log(name_ + " Tx: ", shown);
}

void MailSession::SayAll(const std::vector<std::string>& lines) {
  AwaitReply();
  if (!socket_.IsOpen()) throw ConnectionLost();
  if (!writer_.WriteCommands(lines)) throw SessionFailure{internet_error::kConnectionLost};
  for (const auto& line : lines) Log(name_ + " Tx: ", line);
}

MailSession::Wait MailSession::NextLine() {
  return {*this, Wait::For::Line};
}

void MailSession::AwaitData() {
  dataRate_.Start(settings_.timeoutProtocol, socket_.BytesRead());
  AwaitReply();
}

MailSession::Wait MailSession::NextData() {
  return {*this, Wait::For::Data};
}

MailSession::Wait MailSession::WriteAll(DataSource& source) {
  writer_.SocketSendData(source, [this](bool whole) {
    written_ = whole;
    if (wait_ != nullptr && wait_->Is(Wait::For::Writing)) wait_->End();
  });
  return UntilWritten();
}

MailSession::Wait MailSession::UntilWritten() {
  return {*this, Wait::For::Writing};
}

void MailSession::LoggedIn() {
  loginTimer_.Stop();
  loggedIn_ = true;
  Status("Logged in successfully.");
}

void MailSession::TakeLeave() {
  if (socket_.IsOpen() && !writer_.Busy()) {
    writer_.WriteCommand("QUIT");
    Log(name_ + " Tx: ", "QUIT");
  }
  CloseConnection();
}

void MailSession::CloseConnection() {
  protocolTimer_.Stop();
  loginTimer_.Stop();
  connect_.Cancel();
  plain_.reset();
  secure_.Cancel();
  tokenRequest_.reset();
  secured_ = false;
  writer_.Break();
  written_.reset();
  if (socket_.IsOpen()) Log(name_ + " socket closed.");
  socket_.Close();
  loggedIn_ = inLongLine_ = false;
  unasked_ = 0;
}

void MailSession::OnSilence() {
  if (tokenRequest_ != nullptr) {
    return Fail(SessionFailure(internet_error::kNoAccessToken, SessionFailure::Connection::IsClosed,
                               {}, "the token server did not answer in time"));
  }
  Log(name_ + " time-out: ", "no reply from the server.");
  Fail(SessionFailure{internet_error::kTimedOut});
}

// A reply line that is longer than the socket's buffer is read by its begin.
void MailSession::OnLine(std::string_view text, bool complete) {
  dataRate_.WaitEnds();
  answered_ = true;
  const bool starts = !std::exchange(inLongLine_, !complete);
  if (wait_ == nullptr || wait_->Is(Wait::For::Connection)) return OnUnasked(text, starts);
  if (!starts && !wait_->Is(Wait::For::Data)) return;
  heard_ = {Heard::What::Line, text, starts, complete};
  wait_->End();
}

// What nobody waits for is not interpreted. A server that goes on with it would fill the log, and
// keep the process busy, for as long as it likes.
void MailSession::OnUnasked(std::string_view text, bool starts) {
  if (starts) LogHeard(name_ + " Bogus RX: ", text);
  if (++unasked_ == kMostUnasked) CloseConnection();
}

bool MailSession::TakeData() {
  if (!socket_.TakeLine(heard_.text)) return false;
  heard_.what = Heard::What::Line;
  heard_.starts = !std::exchange(inLongLine_, false);
  heard_.completes = true;
  return true;
}

// Once for what came together: a message may have millions of lines.
void MailSession::OnLinesRead() {
  if (wait_ == nullptr || !wait_->Is(Wait::For::Data)) return;
  if (dataRate_.WaitBegins(socket_.BytesRead())) return AwaitReply();
  Log(name_ + " time-out: ", "too little data from the server.");
  Fail(SessionFailure{internet_error::kTimedOut});
}

// Only CR LF ends a reply (RFC 5321, 2.3.8; RFC 1939, 3), so what the server did not get to say to
// its end counts as not said.
void MailSession::OnUnfinishedLine(std::string_view text) {
  answered_ = true;
  LogHeard(name_ + " cut off: ", text);
}

void MailSession::OnClosed(int error) {
  if (error != 0) LogException(error);
  Log(name_ + " socket closed.");
  CloseConnection();
  Fail(ConnectionLost());
}

void MailSession::LogException(int error) {
  if (!ports_.log.IsOpen()) return;
  Log(name_ + " socket exception: ", std::to_string(error) + " " + ErrorWords(error));
}

void MailSession::LogMilestone(std::string_view text) {
  if (ports_.log.IsOpen()) Log(LogTime(ports_.clock.Now()) + " ", text);
}

}  // namespace quillon
