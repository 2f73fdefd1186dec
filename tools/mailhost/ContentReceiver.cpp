#include "ContentReceiver.h"

#include <utility>

namespace mailhost {

bool ContentReceiver::Begin() {
  delivery_ = begin_();
  active_ = delivery_ != nullptr;
  decoder_ = {};
  size_ = 0;
  return active_;
}

std::size_t ContentReceiver::Take(std::string_view bytes) {
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

bool ContentReceiver::Commit(const Envelope& envelope) {
  return std::exchange(delivery_, nullptr)->Commit(envelope);
}

}  // namespace mailhost
