#include "dialer/SideCall.h"

#include <utility>

#include "core/BackgroundThread.h"

namespace quillon {

SideCall::SideCall(EventLoop& loop, std::function<void()> work, std::function<void()> left) {
  state_->loop = &loop;
  RunInBackground([state = state_, work = std::move(work), left = std::move(left)] {
    Run(*state, work, left);
  });
}

SideCall::~SideCall() {
  const std::lock_guard lock(state_->mutex);
  state_->loop = nullptr;
}

void SideCall::Run(State& state, const std::function<void()>& work,
                   const std::function<void()>& left) noexcept {
  work();
  {
    const std::lock_guard lock(state.mutex);
    if (state.loop != nullptr) {
      state.done = true;
      state.ended.notify_all();
      state.loop->Post([] {});  // it looks again at what it waits for
      return;
    }
  }
  left();
}

bool SideCall::Done() const {
  const std::lock_guard lock(state_->mutex);
  return state_->done;
}

bool SideCall::WaitAlone(std::chrono::milliseconds patience) const {
  std::unique_lock lock(state_->mutex);
  return state_->ended.wait_for(lock, patience, [this] { return state_->done; });
}

}  // namespace quillon
