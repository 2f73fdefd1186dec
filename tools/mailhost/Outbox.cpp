#include "Outbox.h"

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>
#include <utility>

namespace mailhost {

namespace {

// Replies are gathered into one send up to this size, and no command is handled beyond it.
constexpr std::size_t kFull = 64 * 1024;

}  // namespace

std::size_t Shape::PieceLength(std::string_view bytes) const {
  if (kind == Kind::kPieces) return std::min(pieceSize, bytes.size());
  if (kind == Kind::kLine) {
    const std::size_t end = bytes.find('\n');
    if (end != std::string_view::npos) return end + 1;
  }
  return bytes.size();
}

void Outbox::Text(std::string bytes) {
  log_.Server(protocol_, bytes);
  if (!items_.empty() && items_.back().kind == Item::Kind::kText && items_.back().shape == shape_) {
    items_.back().text += bytes;
    return;
  }
  items_.push_back({Item::Kind::kText, shape_, std::move(bytes)});
}

void Outbox::Content(std::unique_ptr<ByteSource> source) {
  items_.push_back({Item::Kind::kContent, shape_, {}, std::move(source)});
}

void Outbox::Pause(std::chrono::milliseconds length) {
  items_.push_back({Item::Kind::kPause, {}, {}, nullptr, 0, length});
}

void Outbox::Close() {
  items_.push_back({Item::Kind::kClose});
}

bool Outbox::HasRoom() const {
  std::size_t bytes = buffer_.size() - sent_;
  for (const Item& item : items_) {
    if (item.kind != Item::Kind::kText) return false;
    bytes += item.text.size();
    if (bytes >= kFull) return false;
  }
  return bytes < kFull;
}

Outbox::State Outbox::Flush(int socket) {
  for (;;) {
    if (sent_ == buffer_.size()) {
      const State state = Refill();
      if (buffer_.empty()) return state;
    }
    const std::string_view rest = std::string_view(buffer_).substr(sent_);
    const std::size_t length = bufferShape_.PieceLength(rest);
    const ssize_t done = send(socket, rest.data(), length, MSG_NOSIGNAL);
    if (done < 0) {
      if (errno == EINTR) continue;
      return errno == EAGAIN ? State::kBlocked : State::kFailed;
    }
    sent_ += static_cast<std::size_t>(done);
    if (bufferShape_.kind != Shape::Kind::kWhole && !Empty()) {
      wait_ = bufferShape_.gap;
      return State::kWaiting;
    }
  }
}

Outbox::State Outbox::Refill() {
  buffer_.clear();
  sent_ = 0;
  while (!items_.empty() && buffer_.size() < kFull) {
    Item& item = items_.front();
    if (item.kind == Item::Kind::kPause) {
      if (!buffer_.empty()) break;
      wait_ = item.pause;
      items_.pop_front();
      return State::kWaiting;
    }
    if (item.kind == Item::Kind::kClose) return State::kClose;
    if (buffer_.empty()) bufferShape_ = item.shape;
    if (bufferShape_ != item.shape) break;
    if (TakeFrom(item)) items_.pop_front();
  }
  return State::kDrained;
}

bool Outbox::TakeFrom(Item& item) {
  if (item.kind == Item::Kind::kText) {
    buffer_ += item.text;
    return true;
  }
  const std::size_t before = buffer_.size();
  const bool more = item.source->Read(buffer_);
  item.produced += buffer_.size() - before;
  if (!more) log_.ServerContent(protocol_, item.produced);
  return !more;
}

}  // namespace mailhost
