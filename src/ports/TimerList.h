// The running timers of one event loop. There are few of them and they are restarted all the time,
// so a list is kept and starting one that runs already only changes its due time.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

namespace quillon {

class TimerList {
 public:
  static constexpr std::uint64_t kStopped = std::numeric_limits<std::uint64_t>::max();

  struct Entry {
    explicit Entry(std::function<void()> callback) : fire(std::move(callback)) {}

    std::uint64_t due = kStopped;
    std::function<void()> fire;
  };

  void Start(Entry& entry, std::uint64_t due) {
    if (entry.due == kStopped) running_.push_back(&entry);
    entry.due = due;
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

  // Fires what is due, the earliest first. A callback may start and stop any timer, or end the
  // owner of its own.
  void FireDue(std::uint64_t now) {
    for (;;) {
      const auto first = std::min_element(
          running_.begin(), running_.end(),
          [](const Entry* left, const Entry* right) { return left->due < right->due; });
      if (first == running_.end() || (*first)->due > now) return;
      Entry& entry = **first;
      Stop(entry);
      const auto fire = entry.fire;
      fire();
    }
  }

 private:
  std::vector<Entry*> running_;
};

}  // namespace quillon
