// Work that other threads hand to a loop, and name look-ups on a helper thread that end there.
//
// The queue is shared with the helper threads, so a look-up that outlives its loop, or is given up,
// ends in silence.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "ports/Network.h"

namespace quillon {

class WorkQueue {
 public:
  // `wake` makes the loop call Run soon, or returns false; it must be callable from any thread.
  explicit WorkQueue(std::function<bool()> wake) : wake_(std::move(wake)) {}

  void Post(std::function<void()> work);
  // Runs as many items as wait now, the oldest first. A nested call goes on where this one is.
  void Run(EventLoop& loop);
  // The loop is going away: nothing runs and nothing wakes it any more.
  void Close();

 private:
  std::function<void()> Take();
  void Wake();

  std::mutex mutex_;
  std::function<bool()> wake_;
  std::deque<std::function<void()>> work_;
  bool woken_ = false;  // and Run has not been called since
};

// The system's blocking look-up: fills the addresses, or returns its error number.
using BlockingLookup = int (*)(const std::string& host, std::uint16_t port,
                               std::vector<SocketAddress>& addresses);

std::unique_ptr<Network::Lookup> StartLookup(const std::shared_ptr<WorkQueue>& queue,
                                             BlockingLookup lookup, const std::string& host,
                                             std::uint16_t port, Network::LookupResult result);

}  // namespace quillon
