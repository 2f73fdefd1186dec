// Waiting: run callbacks for sockets, timers and posted work until a condition holds or a deadline
// passes.
//
// One thread runs a loop and everything that it calls; only Post may be called from another thread.
// RunUntil may be called again from inside a callback (a nested wait). On Windows the loop
// dispatches window messages too, so automation calls and dialogs stay alive while it waits.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>

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

  // Runs callbacks until done() is true (asked before the first wait and after each round) or the
  // deadline passes; returns whether it was done. False before the deadline only when the program
  // is being ended.
  virtual bool RunUntil(const std::function<bool()>& done, TickCount deadline) = 0;

  // Runs what is ready now, without waiting.
  virtual void RunPending() = 0;

  // Runs the work on the loop's thread, in the order posted. Callable from any thread while the
  // loop lives.
  virtual void Post(std::function<void()> work) = 0;

 protected:
  TimerList& Timers() noexcept { return timers_; }

 private:
  friend class Timer;

  TimerList timers_;
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
