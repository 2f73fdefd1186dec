// Work that other threads hand to a loop, and name look-ups on a helper thread that end there.
//
// The queue is shared with the helper threads, so a look-up that outlives its loop, or is given up,
// ends in silence.
#pragma once

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
  // `wake` makes the loop call Run soon; it must be callable from any thread.
  explicit WorkQueue(std::function<void()> wake) : wake_(std::move(wake)) {}

  void Post(std::function<void()> work);
  void Run();
  // The loop is going away: nothing runs and nothing wakes it any more.
  void Close();

 private:
  std::mutex mutex_;
  std::function<void()> wake_;
  std::vector<std::function<void()>> work_;
};

// The system's blocking look-up: fills the addresses, or returns its error number.
using BlockingLookup = int (*)(const std::string& host, std::uint16_t port,
                               std::vector<SocketAddress>& addresses);

std::unique_ptr<Network::Lookup> StartLookup(const std::shared_ptr<WorkQueue>& queue,
                                             BlockingLookup lookup, const std::string& host,
                                             std::uint16_t port, Network::LookupResult result);

}  // namespace quillon
