#include "internet/DataRate.h"

#include <utility>

namespace quillon {

namespace {

// A tenth of what the slowest telephone line brings.
constexpr std::uint64_t kSlowestBytesPerSecond = 100;

}  // namespace

void DataRate::Start(TickCount window, std::uint64_t bytesRead) {
  window_ = window;
  waited_ = 0;
  bytesBefore_ = bytesRead;
  waiting_ = false;
}

void DataRate::WaitEnds() {
  if (std::exchange(waiting_, false)) waited_ += loop_.Now() - waitsSince_;
}

bool DataRate::WaitBegins(std::uint64_t bytesRead) {
  WaitEnds();
  if (waited_ >= window_) {
    if ((bytesRead - bytesBefore_) * 1000 < kSlowestBytesPerSecond * window_) return false;
    Start(window_, bytesRead);
  }
  waiting_ = true;
  waitsSince_ = loop_.Now();
  return true;
}

}  // namespace quillon
