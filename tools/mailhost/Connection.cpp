#include "Connection.h"

#include <array>
#include <cerrno>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <utility>

namespace mailhost {

namespace {

// RFC 5321 4.5.3.1.4 asks for 512 octets in a command line; extensions and hostile tests want more.
constexpr std::size_t kMaxLine = 8192;
constexpr std::size_t kReceiveSize = 131072;

}  // namespace

Connection::Connection(EventLoop& loop, UniqueFd socket, Log& log, Protocol protocol, Closed closed)
    : loop_(loop),
      socket_(std::move(socket)),
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
  loop_.Watch(socket_.Get(), interest_, *this);
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
  setsockopt(socket_.Get(), SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
}

void Connection::Receive() {
  std::array<char, kReceiveSize> bytes;
  const ssize_t count = recv(socket_.Get(), bytes.data(), bytes.size(), 0);
  if (count > 0) {
    input_.append(bytes.data(), static_cast<std::size_t>(count));
  } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
    ended_ = true;
  }
}

void Connection::Pump() {
  while (!closed_) {
    const bool more = HandleInput();
    if (!FlushOutbox() || !more) break;
  }
  if (closed_) return;
  if (ended_ && outbox_.Empty() && !pause_) {
    Close(ClosedBy::kClient);
    return;
  }
  UpdateInterest();
}

bool Connection::HandleInput() {
  const std::string_view input = input_;
  std::size_t used = 0;
  bool waiting = false;
  while (!waiting && used < input.size() && !stalled_ && outbox_.HasRoom() &&
         session_->WantsInput()) {
    const std::string_view rest = input.substr(used);
    if (session_->WantsContent()) {
      used += session_->OnContent(rest);
    } else {
      waiting = !HandleLine(rest, used);
    }
  }
  input_.erase(0, used);
  return !waiting && !input_.empty() && !stalled_ && session_->WantsInput();
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
  const std::string_view line = input.substr(0, end);
  if (std::exchange(skippingLine_, false) || line.size() > kMaxLine) {
    log_.Event(protocol_, "line too long");
    session_->OnBadLine("line too long");
  } else if (!line.ends_with('\r')) {
    log_.Client(protocol_, line);
    session_->OnBadLine("line does not end in CR LF");
  } else {
    log_.Client(protocol_, line.substr(0, line.size() - 1));
    session_->OnLine(line.substr(0, line.size() - 1));
  }
  return true;
}

bool Connection::FlushOutbox() {
  if (pause_ || blocked_) return false;
  switch (outbox_.Flush(socket_.Get())) {
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
      Close(ClosedBy::kHost);
      return false;
    case Outbox::State::kFailed:
      Close(ClosedBy::kClient);
      return false;
  }
  return false;
}

void Connection::UpdateInterest() {
  const bool reads = !ended_ && !stalled_ && outbox_.HasRoom() && session_->WantsInput();
  std::uint32_t wanted = reads ? EPOLLIN : 0U;
  if (blocked_) wanted |= EPOLLOUT;
  if (stalled_) wanted |= EPOLLRDHUP;
  if (wanted == interest_) return;
  interest_ = wanted;
  loop_.Change(socket_.Get(), wanted, *this);
}

void Connection::Close(ClosedBy who) {
  if (closed_) return;
  closed_ = true;
  if (who == ClosedBy::kClient) session_->OnClientGone();
  if (pause_) loop_.Cancel(*pause_);
  pause_.reset();
  loop_.Forget(socket_.Get());
  log_.Event(protocol_, "closed");
  // What the session holds, such as the maildrop, is free for others from now on.
  session_.reset();
  onClosed_(*this);
}

}  // namespace mailhost
