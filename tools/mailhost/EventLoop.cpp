#include "EventLoop.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <system_error>

namespace mailhost {

namespace {

[[noreturn]] void Fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

UniqueFd MakeSignalFd() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGTERM);
  sigaddset(&set, SIGINT);
  if (sigprocmask(SIG_BLOCK, &set, nullptr) != 0) Fail("sigprocmask");
  UniqueFd fd(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
  if (!fd) Fail("signalfd");
  return fd;
}

}  // namespace

EventLoop::EventLoop() : epoll_(epoll_create1(EPOLL_CLOEXEC)) {
  if (!epoll_) Fail("epoll_create1");
  signals_ = MakeSignalFd();
  Control(EPOLL_CTL_ADD, signals_.Get(), EPOLLIN, nullptr);
}

void EventLoop::Watch(int fd, std::uint32_t events, EventHandler& handler) {
  Control(EPOLL_CTL_ADD, fd, events, &handler);
}

void EventLoop::Change(int fd, std::uint32_t events, EventHandler& handler) {
  Control(EPOLL_CTL_MOD, fd, events, &handler);
}

void EventLoop::Forget(int fd) {
  epoll_ctl(epoll_.Get(), EPOLL_CTL_DEL, fd, nullptr);
}

void EventLoop::Control(int operation, int fd, std::uint32_t events, EventHandler* handler) {
  epoll_event event{};
  event.events = events;
  event.data.ptr = handler;
  if (epoll_ctl(epoll_.Get(), operation, fd, &event) != 0) Fail("epoll_ctl");
}

EventLoop::TimerId EventLoop::After(std::chrono::milliseconds delay, Callback callback) {
  const TimerId id{Clock::now() + delay, nextTimer_++};
  timers_.emplace(id, std::move(callback));
  return id;
}

void EventLoop::Run() {
  std::array<epoll_event, 256> events;
  for (;;) {
    const int count = epoll_wait(epoll_.Get(), events.data(), static_cast<int>(events.size()),
                                 MillisecondsToNextTimer());
    if (count < 0 && errno != EINTR) Fail("epoll_wait");
    for (int i = 0; i < count; ++i) {
      const epoll_event& event = events[static_cast<std::size_t>(i)];
      // Only the signal descriptor is watched without a handler.
      if (event.data.ptr == nullptr) return;
      static_cast<EventHandler*>(event.data.ptr)->OnEvents(event.events);
    }
    RunTimers();
    RunLater();
  }
}

int EventLoop::MillisecondsToNextTimer() const {
  if (timers_.empty()) return -1;
  const auto left = timers_.begin()->first.first - Clock::now();
  const auto whole = std::chrono::ceil<std::chrono::milliseconds>(left).count();
  return static_cast<int>(std::clamp<std::int64_t>(whole, 0, INT_MAX));
}

void EventLoop::RunTimers() {
  const auto now = Clock::now();
  while (!timers_.empty() && timers_.begin()->first.first <= now) {
    const Callback callback = std::move(timers_.begin()->second);
    timers_.erase(timers_.begin());
    callback();
  }
}

void EventLoop::RunLater() {
  const std::vector<Callback> callbacks = std::exchange(later_, {});
  for (const Callback& callback : callbacks) callback();
}

}  // namespace mailhost
