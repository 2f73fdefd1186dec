#include "Connection.h"

#include <sys/epoll.h>
#include <sys/socket.h>
#include <utility>

namespace mailhost {

namespace {

// RFC 4954 4 asks for 12288 octets in a line of a login, the most that any command needs.
constexpr std::size_t kMaxLine = 16384;

}  // namespace

Connection::Connection(EventLoop& loop, UniqueFd socket, Log& log, Protocol protocol, Closed closed)
    : loop_(loop),
      wire_(std::move(socket)),
      log_(log),
      protocol_(protocol),
      onClosed_(std::move(closed)),
      outbox_(log, protocol) {}

Connection::~Connection() {
  if (pause_) loop_.Cancel(*pause_);
}

void Connection::Start(std::unique_ptr<Session> session) {
  session_ = std::move(session);
  log_.Event(protocol_, "connected");
  interest_ = EPOLLIN;
  loop_.Watch(wire_.Socket(), interest_, *this);
  session_->OnOpen();
  Pump();
}

void Connection::OnEvents(std::uint32_t events) {
  if (closed_) return;
  blocked_ = blocked_ && (events & EPOLLOUT) == 0;
  if ((events & EPOLLIN) != 0) {
    Receive();
  } else if ((events & (EPOLLERR | EPOLLHUP)) != 0 || (stalled_ && (events & EPOLLRDHUP) != 0)) {
    Close(ClosedBy::kClient);
    return;
  }
  Pump();
}

void Connection::StopReading() {
  stalled_ = true;
  // The smallest buffer, so that the client need not send much before it blocks.
  const int size = 1;
  setsockopt(wire_.Socket(), SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
}

void Connection::Secure(std::unique_ptr<TlsSession> tls, const WireFaults& faults) {
  coming_ = std::move(tls);
  faults_ = faults;
}

void Connection::BeginTls() {
  if (!input_.empty()) {
    log_.Event(protocol_, "error: the client said more in clear before TLS");
    Close(ClosedBy::kHost);
    return;
  }
  wire_.Secure(std::move(coming_), faults_);
  handshaking_ = true;
}

void Connection::Receive() {
  ended_ = wire_.Receive(input_) == Wire::Received::kEnd || ended_;
  if (wire_.Tls() != nullptr) NoteTls();
  if (deaf_) input_.clear();
}

void Connection::NoteTls() {
  const TlsSession& tls = *wire_.Tls();
  if (handshaking_ && tls.Now() == TlsSession::State::kOpen) {
    handshaking_ = false;
    log_.Event(protocol_, tls.Description());
    session_->OnSecured();
  }
  if (tls.Now() == TlsSession::State::kFailed) {
    log_.Event(protocol_, "TLS failed: " + tls.Failure());
  } else if (ended_ && tls.Now() != TlsSession::State::kEnded) {
    log_.Event(protocol_, "TLS was cut off");
  }
}

void Connection::Pump() {
  while (!closed_) {
    const bool more = HandleInput();
    if (!FlushOutbox()) break;
    if (coming_) BeginTls();
    if (!more) break;
  }
  if (closed_) return;
  if (ended_ && outbox_.Empty() && wire_.Empty() && !pause_) {
    Close(ClosedBy::kClient);
    return;
  }
  UpdateInterest();
}

bool Connection::HandleInput() {
  const std::string_view input = input_;
  std::size_t used = 0;
  bool waiting = false;
  while (!waiting && used < input.size() && !stalled_ && !coming_ && outbox_.HasRoom() &&
         session_->WantsInput()) {
    const std::string_view rest = input.substr(used);
    if (session_->WantsContent()) {
      used += session_->OnContent(rest);
    } else {
      waiting = !HandleLine(rest, used);
    }
  }
  input_.erase(0, used);
  return !waiting && !input_.empty() && !stalled_ && !coming_ && session_->WantsInput();
}

// Returns false when the line is not complete yet.
bool Connection::HandleLine(std::string_view input, std::size_t& used) {
  const std::size_t end = input.find('\n');
  if (end == std::string_view::npos) {
    if (input.size() <= kMaxLine && !skippingLine_) return false;
    skippingLine_ = true;
    used += input.size();
    return true;
  }
  used += end + 1;
  std::string_view line = input.substr(0, end);
  if (std::exchange(skippingLine_, false) || line.size() > kMaxLine) {
    log_.Event(protocol_, "line too long");
    session_->OnBadLine("line too long");
    return true;
  }
  const bool whole = line.ends_with('\r');
  if (whole) line.remove_suffix(1);
  log_.Client(protocol_, session_->ExpectsSecret() ? kMasked : line);
  if (whole) {
    session_->OnLine(line);
  } else {
    session_->OnBadLine("line does not end in CR LF");
  }
  return true;
}

bool Connection::FlushOutbox() {
  if (pause_ || blocked_) return false;
  switch (outbox_.Flush(wire_)) {
    case Outbox::State::kDrained:
      return true;
    case Outbox::State::kBlocked:
      blocked_ = true;
      return false;
    case Outbox::State::kWaiting:
      pause_ = loop_.After(outbox_.Wait(), [this] {
        pause_.reset();
        Pump();
      });
      return false;
    case Outbox::State::kClose:
      wire_.SayEnd();
      Close(ClosedBy::kHost);
      return false;
    case Outbox::State::kCut:
      Close(ClosedBy::kHost);
      return false;
    case Outbox::State::kFailed:
      Close(ClosedBy::kClient);
      return false;
  }
  return false;
}

void Connection::UpdateInterest() {
  const bool reads =
      !ended_ && !stalled_ && !coming_ && outbox_.HasRoom() && session_->WantsInput();
  std::uint32_t wanted = reads ? EPOLLIN : 0U;
  if (blocked_) wanted |= EPOLLOUT;
  if (stalled_) wanted |= EPOLLRDHUP;
  if (wanted == interest_) return;
  interest_ = wanted;
  loop_.Change(wire_.Socket(), wanted, *this);
}

void Connection::Close(ClosedBy who) {
  if (closed_) return;
  closed_ = true;
  if (who == ClosedBy::kClient) session_->OnClientGone();
  if (pause_) loop_.Cancel(*pause_);
  pause_.reset();
  loop_.Forget(wire_.Socket());
  log_.Event(protocol_, "closed");
  // What the session holds, such as the maildrop, is free for others from now on.
  session_.reset();
  onClosed_(*this);
}

}  // namespace mailhost
