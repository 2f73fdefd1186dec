#include "core/BackgroundThread.h"

#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>
#include <utility>

namespace quillon {

namespace {

struct Threads {
  std::mutex mutex;
  std::list<std::thread> running;
  // But for their last steps, which the next beginning waits for.
  std::list<std::thread> ended;
  std::condition_variable oneEnded;

  void JoinEnded() {
    for (auto& thread : ended) thread.join();
    ended.clear();
  }
};

Threads& AllThreads() {
  // Never destroyed, because the process may end before its threads do.
  // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): the list has to change.
  static auto* const threads = new Threads;
  return *threads;
}

}  // namespace

void RunInBackground(std::function<void()> work) {
  auto& threads = AllThreads();
  const std::lock_guard lock(threads.mutex);
  threads.JoinEnded();
  const auto place = threads.running.emplace(threads.running.end());
  try {
    *place = std::thread([&threads, place, work = std::move(work)] {
      work();
      const std::lock_guard turn(threads.mutex);
      threads.ended.splice(threads.ended.end(), threads.running, place);
      threads.oneEnded.notify_all();
    });
  } catch (...) {
    threads.running.erase(place);
    throw;
  }
}

void JoinBackgroundThreads() {
  auto& threads = AllThreads();
  std::unique_lock lock(threads.mutex);
  threads.oneEnded.wait(lock, [&threads] { return threads.running.empty(); });
  threads.JoinEnded();
}

}  // namespace quillon
