// What a coroutine passes when it is open and waits at when it is closed: `co_await gate;`.
#pragma once

#include "core/Task.h"

namespace quillon {

// One coroutine at a time may wait at it.
class Gate {
 public:
  class Passing {
   public:
    explicit Passing(Gate& gate) : gate_(gate) {}
    ~Passing() {
      if (gate_.waiting_ == this) gate_.waiting_ = nullptr;
    }
    Passing(const Passing&) = delete;
    Passing& operator=(const Passing&) = delete;

    bool await_ready() const noexcept { return gate_.open_; }
    template <typename Promise>
    void await_suspend(std::coroutine_handle<Promise> waiting) {
      suspended_ = Suspended(waiting);
      gate_.waiting_ = this;
    }
    void await_resume() const noexcept {}

   private:
    friend class Gate;

    Gate& gate_;
    Suspended suspended_;
  };

  bool IsOpen() const noexcept { return open_; }
  void Close() noexcept { open_ = false; }
  // What waits goes on before this returns.
  void Open() {
    open_ = true;
    if (auto* const waiting = std::exchange(waiting_, nullptr)) waiting->suspended_.Resume();
  }

  Passing operator co_await() noexcept { return Passing(*this); }

 private:
  bool open_ = true;
  Passing* waiting_ = nullptr;
};

}  // namespace quillon
