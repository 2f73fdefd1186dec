#include "core/BackgroundCall.h"

#include <utility>

namespace quillon {

BackgroundCall::BackgroundCall(EventLoop& loop, const BackgroundRunner& run,
                               std::function<void()> work, std::function<void()> done) {
  state_->loop = &loop;
  state_->done = std::move(done);
  run([state = state_, work = std::move(work)] {
    work();
    const std::lock_guard lock(state->mutex);
    if (state->loop == nullptr) return;
    state->loop->Post([state] {
      if (const auto ended = std::exchange(state->done, nullptr)) ended();
    });
  });
}

BackgroundCall::~BackgroundCall() {
  const std::lock_guard lock(state_->mutex);
  state_->loop = nullptr;
  state_->done = nullptr;
}

}  // namespace quillon
