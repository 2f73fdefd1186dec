#include "internet/MailSession.h"

#include <new>
#include <system_error>
#include <utility>

#include "core/ErrorCode.h"

namespace quillon {

namespace {

constexpr std::int32_t kTimedOut = 27;
constexpr std::int32_t kSendTimedOut = 28;
constexpr std::int32_t kNetworkError = 29;
constexpr std::int32_t kOverflow = 30;

}  // namespace

MailSession::MailSession(const SessionPorts& ports, std::string_view name)
    : ports_(ports),
      name_(name),
      connect_(ports.loop, ports.network),
      socket_(*this),
      writer_(ports.loop, socket_,
              [this] {
                Log("Network timeout on send.");
                FinishAndClose(kSendTimedOut);
              }),
      protocolTimer_(ports.loop, [this] { OnSilence(); }),
      loginTimer_(ports.loop, [this] { OnSilence(); }) {}

void MailSession::Begin(const SessionSettings& settings, bool mayReconnect) {
  const bool otherServer = settings.host != settings_.host || settings.port != settings_.port;
  if (Connected() && (otherServer || !loggedIn_)) FinishAndQuit(kSessionSuccess);
  settings_ = settings;
  writer_.SetTimeout(settings.timeoutSend);
  done_ = heard_ = false;
  mayReconnect_ = loggedIn_ && mayReconnect;
  if (loggedIn_) return OnReady();
  Connect();
}

void MailSession::Connect() {
  LogMilestone("Attempting to connect... ");
  connect_.Start(settings_.host, settings_.port, settings_.timeoutConnect,
                 [this](std::unique_ptr<ByteStream> stream, std::int32_t code) {
                   OnConnectResult(std::move(stream), code);
                 });
}

void MailSession::OnConnectResult(std::unique_ptr<ByteStream> stream, std::int32_t code) {
  if (stream == nullptr) {
    LogException(connect_.LastError());
    return FinishAndClose(code);
  }
  socket_.Attach(std::move(stream));
  loginTimer_.Start(settings_.timeoutConnect);
  AwaitReply();
  OnConnected();
}

void MailSession::SendCommand(std::string_view line, std::string_view logged) {
  AwaitReply();
  SendUnawaited(line, logged);
}

void MailSession::SendUnawaited(std::string_view line, std::string_view logged) {
  if (!writer_.WriteCommand(line)) return FinishAndClose(kNetworkError);
  Log(name_ + " Tx: ", logged.empty() ? line : logged);
}

void MailSession::AwaitReply() {
  protocolTimer_.Start(settings_.timeoutProtocol);
}

void MailSession::LoggedIn() {
  loginTimer_.Stop();
  loggedIn_ = true;
  Status("Logged in successfully.");
}

void MailSession::Finish(std::int32_t result) {
  protocolTimer_.Stop();
  loginTimer_.Stop();
  result_ = result;
  if (!std::exchange(done_, true)) ports_.listener.OnFinished();
}

void MailSession::FinishAndQuit(std::int32_t result) {
  if (Connected() && !writer_.Busy()) {
    writer_.WriteCommand("QUIT");
    Log(name_ + " Tx: ", "QUIT");
  }
  FinishAndClose(result);
}

void MailSession::FinishAndClose(std::int32_t result) {
  CloseConnection();
  Finish(result);
}

void MailSession::CloseConnection() {
  connect_.Cancel();
  writer_.Break();
  if (socket_.IsOpen()) Log(name_ + " socket closed.");
  socket_.Close();
  loggedIn_ = false;
  OnDisconnected();
}

void MailSession::Abort() {
  if (Active()) FinishAndClose(error_code::kUserAborted);
}

void MailSession::Disconnect() {
  if (Active()) return FinishAndClose(kNetworkError);
  CloseConnection();
}

void MailSession::OnSilence() {
  Log(name_ + " time-out: ", "no reply from the server.");
  FinishAndClose(kTimedOut);
}

void MailSession::OnLine(std::string_view text, bool complete) {
  heard_ = true;
  try {
    OnReplyLine(text, complete);
  } catch (const std::bad_alloc&) {
    FinishAndClose(kOverflow);
  }
}

// Only CR LF ends a reply (RFC 5321, 2.3.8; RFC 1939, 3), so what the server did not get to say to
// its end counts as not said.
void MailSession::OnUnfinishedLine(std::string_view text) {
  heard_ = true;
  Log(name_ + " cut off: ", text);
}

void MailSession::OnClosed(int error) {
  if (error != 0) LogException(error);
  Log(name_ + " socket closed.");
  const auto number = LossNumber();
  const bool wasActive = Active();
  CloseConnection();
  if (!wasActive) return;
  protocolTimer_.Stop();
  // The server had given the idle connection up before it could hear of this operation: nothing has
  // been done yet, so it can begin again.
  if (std::exchange(mayReconnect_, false) && !heard_) return Connect();
  Finish(number);
}

// The system has no error for a host that just does not answer.
void MailSession::LogException(int error) {
  if (!ports_.log.IsOpen()) return;
  const auto text = error == 0 ? "no answer in time" : std::system_category().message(error);
  Log(name_ + " socket exception: ", std::to_string(error) + " " + text);
}

void MailSession::LogMilestone(std::string_view text) {
  if (ports_.log.IsOpen()) Log(LogTime(ports_.clock.Now()) + " ", text);
}

}  // namespace quillon
