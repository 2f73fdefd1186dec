#include "platform/LookupQueue.h"

#include <system_error>

#include "core/BackgroundThread.h"

namespace quillon {

void WorkQueue::Post(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  if (!wake_) return;
  work_.push_back(std::move(work));
  Wake();
}

void WorkQueue::Run(EventLoop& loop) {
  std::size_t count = 0;
  {
    const std::lock_guard lock(mutex_);
    woken_ = false;
    count = work_.size();
  }
  for (; count > 0; --count) {
    const auto work = Take();
    if (!work) return;
    loop.Contain(work);
  }
}

// What stays behind has to find a loop awake: the item that is taken may wait itself.
std::function<void()> WorkQueue::Take() {
  const std::lock_guard lock(mutex_);
  if (work_.empty()) return nullptr;
  auto work = std::move(work_.front());
  work_.pop_front();
  if (!work_.empty()) Wake();
  return work;
}

void WorkQueue::Wake() {
  if (!woken_ && wake_) woken_ = wake_();
}

void WorkQueue::Close() {
  const std::lock_guard lock(mutex_);
  wake_ = nullptr;
  work_.clear();
}

namespace {

// Used on the loop's thread only; the helper thread just carries it there.
struct PendingLookup {
  Network::LookupResult result;
};

class LookupHandle final : public Network::Lookup {
 public:
  explicit LookupHandle(std::shared_ptr<PendingLookup> pending) : pending_(std::move(pending)) {}
  ~LookupHandle() override { pending_->result = nullptr; }

 private:
  std::shared_ptr<PendingLookup> pending_;
};

}  // namespace

std::unique_ptr<Network::Lookup> StartLookup(const std::shared_ptr<WorkQueue>& queue,
                                             BlockingLookup lookup, const std::string& host,
                                             std::uint16_t port, Network::LookupResult result) {
  auto pending = std::make_shared<PendingLookup>(PendingLookup{std::move(result)});
  auto handle = std::make_unique<LookupHandle>(pending);
  const auto deliver = [queue, pending](std::vector<SocketAddress> addresses, int error) {
    queue->Post([pending, addresses = std::move(addresses), error]() mutable {
      // The owner may drop the look-up in its own callback.
      if (const auto call = std::exchange(pending->result, nullptr)) {
        call(std::move(addresses), error);
      }
    });
  };
  try {
    RunInBackground([lookup, host, port, deliver] {
      std::vector<SocketAddress> addresses;
      const int error = lookup(host, port, addresses);
      deliver(std::move(addresses), error);
    });
  } catch (const std::system_error& error) {
    deliver({}, error.code().value());
  }
  return handle;
}

}  // namespace quillon
