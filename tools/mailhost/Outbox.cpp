#include "Outbox.h"

#include <algorithm>
#include <utility>

namespace mailhost {

namespace {

// Replies are gathered into one send up to this size, and no command is handled beyond it.
constexpr std::size_t kFull = 64 * 1024;

}  // namespace

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

void Outbox::Cut() {
  items_.push_back({Item::Kind::kCut});
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

Outbox::State Outbox::Flush(Wire& wire) {
  for (Wire::State state = wire.Flush();;) {
    if (state == Wire::State::kBlocked) return State::kBlocked;
    if (state == Wire::State::kWaiting) return Waiting(wire.Gap());
    if (state == Wire::State::kCut) return State::kCut;
    if (state == Wire::State::kFailed) return State::kFailed;
    if (sent_ == buffer_.size()) {
      const State refilled = Refill();
      if (buffer_.empty()) return refilled;
    }
    const std::string_view rest = std::string_view(buffer_).substr(sent_);
    const std::size_t length = bufferShape_.PieceLength(rest);
    std::string_view piece = rest.substr(0, length);
    state = wire.Send(piece);
    sent_ += length - piece.size();
    const bool shaped = bufferShape_.kind != Shape::Kind::kWhole;
    if (state == Wire::State::kDrained && shaped && !Empty()) return Waiting(bufferShape_.gap);
  }
}

Outbox::State Outbox::Waiting(std::chrono::milliseconds length) {
  wait_ = length;
  return State::kWaiting;
}

Outbox::State Outbox::Refill() {
  buffer_.clear();
  sent_ = 0;
  while (!items_.empty() && buffer_.size() < kFull) {
    Item& item = items_.front();
    if (item.kind == Item::Kind::kPause) {
      if (!buffer_.empty()) break;
      const State state = Waiting(item.pause);
      items_.pop_front();
      return state;
    }
    if (item.kind == Item::Kind::kClose) return State::kClose;
    if (item.kind == Item::Kind::kCut) return State::kCut;
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
