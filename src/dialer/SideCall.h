// A call that blocks, made on a thread of its own while the loop serves everybody else.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

#include "ports/EventLoop.h"

namespace quillon {

class SideCall {
 public:
  // `work` runs on the other thread from now on, and `left` does behind it when nobody has waited
  // for the end: this object is gone by then. Neither may throw, or touch what does not live as
  // long as they do. Throws std::system_error when there is no thread to be had.
  SideCall(EventLoop& loop, std::function<void()> work, std::function<void()> left);
  ~SideCall();
  SideCall(const SideCall&) = delete;
  SideCall& operator=(const SideCall&) = delete;

  // The loop wakes when it becomes true.
  bool Done() const;

  // Serves nobody: for a loop that is being ended. Returns Done().
  bool WaitAlone(std::chrono::milliseconds patience) const;

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable ended;
    EventLoop* loop = nullptr;  // null when nobody waits
    bool done = false;
  };

  static void Run(State& state, const std::function<void()>& work,
                  const std::function<void()>& left) noexcept;

  const std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace quillon
