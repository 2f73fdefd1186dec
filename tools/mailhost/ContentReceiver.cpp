#include "ContentReceiver.h"

#include <algorithm>
#include <utility>

namespace mailhost {

bool ContentReceiver::Begin() {
  delivery_ = begin_();
  active_ = delivery_ != nullptr;
  isChunk_ = false;
  decoder_ = {};
  size_ = 0;
  return active_;
}

bool ContentReceiver::BeginChunk(std::uint64_t size) {
  if (!delivery_) {
    delivery_ = begin_();
    size_ = 0;
  }
  const bool good = delivery_ != nullptr;
  if (!good) Discard();
  isChunk_ = true;
  chunkLeft_ = size;
  active_ = size != 0;
  return good;
}

std::size_t ContentReceiver::Take(std::string_view bytes) {
  if (isChunk_) return TakeChunk(bytes);
  const std::size_t used = decoder_.Feed(bytes, [this](std::string_view run) {
    size_ += run.size();
    delivery_->Write(run);
  });
  active_ = !decoder_.Done();
  if (!active_) {
    log_.ClientContent(Protocol::kSmtp, size_);
    log_.Client(Protocol::kSmtp, ".");
  }
  return used;
}

std::size_t ContentReceiver::TakeChunk(std::string_view bytes) {
  const auto used = static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), chunkLeft_));
  delivery_->Write(bytes.substr(0, used));
  size_ += used;
  chunkLeft_ -= used;
  active_ = chunkLeft_ != 0;
  if (!active_) log_.ClientContent(Protocol::kSmtp, size_);
  return used;
}

bool ContentReceiver::Commit(const Envelope& envelope) {
  return std::exchange(delivery_, nullptr)->Commit(envelope);
}

}  // namespace mailhost
