#include "Wire.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <utility>

namespace mailhost {

namespace {

constexpr std::size_t kReceiveSize = 131072;

}  // namespace

void Wire::Secure(std::unique_ptr<TlsSession> tls, const WireFaults& faults) {
  tls_ = std::move(tls);
  faults_ = faults;
}

Wire::Received Wire::Receive(std::string& text) {
  std::array<char, kReceiveSize> bytes;
  const ssize_t count = recv(socket_.Get(), bytes.data(), bytes.size(), 0);
  if (count < 0) return errno == EAGAIN || errno == EINTR ? Received::kNone : Received::kEnd;
  if (count == 0) return Received::kEnd;
  const std::string_view got(bytes.data(), static_cast<std::size_t>(count));
  if (!tls_) {
    text += got;
    return Received::kSome;
  }
  const TlsSession::State state = tls_->Receive(got, text);
  pending_ += tls_->TakeOutput();
  const bool over = state == TlsSession::State::kEnded || state == TlsSession::State::kFailed;
  return over ? Received::kEnd : Received::kSome;
}

Wire::State Wire::Send(std::string_view& text) {
  if (!tls_) return SendRaw(text);
  tls_->Seal(std::exchange(text, {}));
  pending_ += tls_->TakeOutput();
  return tls_->Now() == TlsSession::State::kFailed ? State::kFailed : Flush();
}

Wire::State Wire::Flush() {
  std::string_view rest = pending_;
  State state = State::kDrained;
  while (!rest.empty() && state == State::kDrained) {
    std::string_view piece = rest.substr(0, faults_.shape.PieceLength(rest));
    if (faults_.limit) piece = piece.substr(0, static_cast<std::size_t>(*faults_.limit));
    const std::size_t before = piece.size();
    state = SendRaw(piece);
    const std::size_t sent = before - piece.size();
    rest.remove_prefix(sent);
    if (faults_.limit && (*faults_.limit -= sent) == 0) return State::kCut;
    if (state == State::kDrained && faults_.shape.kind != Shape::Kind::kWhole && !rest.empty()) {
      state = State::kWaiting;
    }
  }
  pending_.erase(0, pending_.size() - rest.size());
  return state;
}

Wire::State Wire::SendRaw(std::string_view& bytes) const {
  while (!bytes.empty()) {
    const ssize_t done = send(socket_.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (done >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(done));
    } else if (errno != EINTR) {
      return errno == EAGAIN ? State::kBlocked : State::kFailed;
    }
  }
  return State::kDrained;
}

void Wire::SayEnd() {
  if (!tls_ || tls_->Now() == TlsSession::State::kHandshake) return;
  tls_->SealEnd();
  faults_.shape = {};
  pending_ += tls_->TakeOutput();
  Flush();
}

}  // namespace mailhost
