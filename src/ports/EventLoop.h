// Waiting: run callbacks for sockets, timers and posted work until a condition holds or a deadline
// passes.
//
// One thread runs a loop and everything that it calls; only Post may be called from another thread.
// RunUntil may be called again from inside a callback (a nested wait). On Windows the loop
// dispatches window messages too, so automation calls and dialogs stay alive while it waits.
//
// A wait goes in rounds. In each one a limited number of events and what has been posted before
// run, then the timers that are due; `done` is asked between rounds. So whatever a peer sends, and
// whatever starts itself anew, everybody else has a turn.
//
// A callback that throws disturbs nobody else. Whoever has to hear of a failure catches it inside;
// what leaves a callback all the same is kept, and thrown by the outermost wait at the end of its
// round, one in each. A nested wait, which is some other operation's, never throws it.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <limits>
#include <utility>

#include "ports/TimerList.h"

namespace quillon {

// Milliseconds of a clock that never goes back.
using TickCount = std::uint64_t;

inline constexpr TickCount kNoDeadline = std::numeric_limits<TickCount>::max();

class EventLoop {
 public:
  EventLoop() = default;
  virtual ~EventLoop() = default;
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  virtual TickCount Now() const = 0;

  // Runs callbacks until done() is true (asked before the first round and after each one) or the
  // deadline passes; returns whether it was done. False before the deadline only when the program
  // is being ended.
  virtual bool RunUntil(const std::function<bool()>& done, TickCount deadline) = 0;

  // Runs one round of what is ready now, without waiting.
  virtual void RunPending() = 0;

  // Fires the timers that are due, for those who are called by a loop of somebody else's.
  void RunTimers() {
    Wait wait(*this);
    wait.EndRound(Now());
  }

  // Runs the work on the loop's thread, in the order posted. Callable from any thread while the
  // loop lives.
  virtual void Post(std::function<void()> work) = 0;

  // Runs a callback under the rule above. For those that the system calls without the loop: no
  // exception may pass through a window procedure.
  template <typename Callback>
  void Contain(Callback&& callback) noexcept {
    try {
      callback();
    } catch (...) {
      Keep(std::current_exception());
    }
  }

 protected:
  // On the stack during each RunUntil and RunPending.
  class Wait {
   public:
    explicit Wait(EventLoop& loop) noexcept : loop_(loop) { ++loop_.waits_; }
    ~Wait() { --loop_.waits_; }
    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;

    bool Outermost() const noexcept { return loop_.waits_ == 1; }
    // Fires the timers and throws what has been kept.
    void EndRound(TickCount now) {
      loop_.timers_.FireDue(now, [this](const auto& fire) { loop_.Contain(fire); });
      if (Outermost()) loop_.ThrowKept();
    }

   private:
    EventLoop& loop_;
  };

  const TimerList& Timers() const noexcept { return timers_; }

 private:
  friend class Timer;

  void Keep(std::exception_ptr failure) noexcept {
    if (failureCount_ < failures_.size()) failures_[failureCount_++] = std::move(failure);
  }
  void ThrowKept() {
    if (failureCount_ == 0) return;
    const auto first = std::exchange(failures_[0], nullptr);
    std::move(failures_.begin() + 1, failures_.end(), failures_.begin());
    --failureCount_;
    std::rethrow_exception(first);
  }

  TimerList timers_;
  int waits_ = 0;
  // Room for what fails together; during a long nested wait more than that is more of the same.
  std::array<std::exception_ptr, 16> failures_;
  std::size_t failureCount_ = 0;
};

// Calls back once, `delay` milliseconds after Start, unless stopped or started anew before. Must
// not outlive its loop.
class Timer {
 public:
  Timer(EventLoop& loop, std::function<void()> fire) : loop_(loop), entry_(std::move(fire)) {}
  ~Timer() { Stop(); }
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  void Start(TickCount delay) { loop_.timers_.Start(entry_, loop_.Now() + delay); }
  void Stop() { loop_.timers_.Stop(entry_); }
  bool Running() const noexcept { return entry_.due != TimerList::kStopped; }

 private:
  EventLoop& loop_;
  TimerList::Entry entry_;
};

}  // namespace quillon
