// A coroutine's wait for some time to pass: `Pause pause(loop, milliseconds); co_await pause;`.
#pragma once

#include "core/Task.h"
#include "ports/EventLoop.h"

namespace quillon {

class Pause {
 public:
  // 0: until the loop has had a turn.
  Pause(EventLoop& loop, TickCount delay)
      : timer_(loop, [this] { suspended_.Resume(); }), delay_(delay) {}

  bool await_ready() const noexcept { return false; }
  template <typename Promise>
  void await_suspend(std::coroutine_handle<Promise> waiting) {
    suspended_ = Suspended(waiting);
    timer_.Start(delay_);
  }
  void await_resume() const noexcept {}

 private:
  Suspended suspended_;
  Timer timer_;
  TickCount delay_;
};

}  // namespace quillon
