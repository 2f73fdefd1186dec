// The running timers of one event loop. There are few of them and they are restarted all the time,
// so a list is kept and starting one that runs already only changes its due time.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

namespace quillon {

class TimerList {
 public:
  static constexpr std::uint64_t kStopped = std::numeric_limits<std::uint64_t>::max();

  struct Entry {
    explicit Entry(std::function<void()> callback) : fire(std::move(callback)) {}

    std::uint64_t due = kStopped;
    std::uint64_t start = 0;  // its last one, of all starts
    std::function<void()> fire;
  };

  void Start(Entry& entry, std::uint64_t due) {
    if (entry.due == kStopped) running_.push_back(&entry);
    entry.due = due;
    entry.start = ++starts_;
  }

  void Stop(Entry& entry) {
    if (entry.due == kStopped) return;
    entry.due = kStopped;
    std::erase(running_, &entry);
  }

  // When the next one is due; kStopped when none runs.
  std::uint64_t NextDue() const noexcept {
    std::uint64_t next = kStopped;
    for (const auto* entry : running_) next = std::min(next, entry->due);
    return next;
  }

  // Hands the callbacks of what is due to `call`, the earliest first. A callback may start and stop
  // any timer, or end the owner of its own; what it starts is not due before the next time.
  template <typename Call>
  void FireDue(std::uint64_t now, const Call& call) {
    const auto begin = starts_;
    const auto order = [now, begin](const Entry* entry) {
      const bool waits = entry->due > now || entry->start > begin;
      return std::pair(waits, entry->due);
    };
    for (;;) {
      const auto first = std::min_element(
          running_.begin(), running_.end(),
          [&](const Entry* left, const Entry* right) { return order(left) < order(right); });
      if (first == running_.end() || order(*first).first) return;
      Entry& entry = **first;
      Stop(entry);
      const auto fire = entry.fire;
      call(fire);
    }
  }

 private:
  std::vector<Entry*> running_;
  std::uint64_t starts_ = 0;
};

}  // namespace quillon
