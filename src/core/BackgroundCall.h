// Work that blocks, done on a thread of its own, whose end comes from the event loop.
#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "ports/EventLoop.h"

namespace quillon {

// How work gets to its thread: RunInBackground, or what a test puts in its place.
using BackgroundRunner = std::function<void(std::function<void()> work)>;

class BackgroundCall {
 public:
  // `work` may not throw, and touches nothing that may go before it ends: nobody waits for that.
  // `done` is called once, behind the work, unless this object has gone before. Throws
  // std::system_error when there is no thread to be had.
  BackgroundCall(EventLoop& loop, const BackgroundRunner& run, std::function<void()> work,
                 std::function<void()> done);
  ~BackgroundCall();
  BackgroundCall(const BackgroundCall&) = delete;
  BackgroundCall& operator=(const BackgroundCall&) = delete;

 private:
  struct State {
    std::mutex mutex;
    EventLoop* loop = nullptr;   // null when nobody waits
    std::function<void()> done;  // of the loop's thread
  };

  const std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace quillon
