// One thread, one epoll set: watches descriptors, runs timers, and ends on SIGTERM or SIGINT.
//
// Everything in mailhost runs in callbacks of this loop, so nothing in it is locked.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "UniqueFd.h"

namespace mailhost {

// Receives the events of one watched descriptor, as EPOLL* bits.
class EventHandler {
 public:
  virtual ~EventHandler() = default;
  virtual void OnEvents(std::uint32_t events) = 0;
};

class EventLoop {
 public:
  using Clock = std::chrono::steady_clock;
  using Callback = std::function<void()>;
  // Names one pending timer.
  using TimerId = std::pair<Clock::time_point, std::uint64_t>;

  // Blocks SIGTERM and SIGINT, which from now on end Run(). Throws std::system_error.
  EventLoop();
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  // The handler must stay alive until Forget() and the end of the current round of events.
  void Watch(int fd, std::uint32_t events, EventHandler& handler);
  void Change(int fd, std::uint32_t events, EventHandler& handler);
  void Forget(int fd);

  TimerId After(std::chrono::milliseconds delay, Callback callback);
  // Does nothing for a timer that has run already.
  void Cancel(const TimerId& timer) { timers_.erase(timer); }

  // Runs `callback` when all events at hand are handled: the place to destroy a handler.
  void Later(Callback callback) { later_.push_back(std::move(callback)); }

  // Handles events until a signal asks for the end.
  void Run();

 private:
  void Control(int operation, int fd, std::uint32_t events, EventHandler* handler);
  int MillisecondsToNextTimer() const;
  void RunTimers();
  void RunLater();

  UniqueFd epoll_;
  UniqueFd signals_;
  std::map<TimerId, Callback> timers_;
  std::uint64_t nextTimer_ = 0;
  std::vector<Callback> later_;
};

}  // namespace mailhost
