// While it lives, this thread and the processes that it starts share one processor: a message from
// one to the other then need not wake a processor that sleeps.
#pragma once

#include <sched.h>
#include <stdexcept>

namespace quillon::bench {

class OneProcessor {
 public:
  OneProcessor() {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<unsigned>(::sched_getcpu()), &one);
    if (::sched_getaffinity(0, sizeof before_, &before_) != 0 ||
        ::sched_setaffinity(0, sizeof one, &one) != 0) {
      throw std::runtime_error("cannot stay on one processor");
    }
  }
  ~OneProcessor() { ::sched_setaffinity(0, sizeof before_, &before_); }
  OneProcessor(const OneProcessor&) = delete;
  OneProcessor& operator=(const OneProcessor&) = delete;

 private:
  cpu_set_t before_{};
};

}  // namespace quillon::bench
