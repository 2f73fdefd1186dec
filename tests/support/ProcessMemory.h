// How much memory this process takes while something is done, as the system counts it.
#pragma once

#include <cstdint>

namespace quillon::testing {

class ProcessMemory {
 public:
  // From here on.
  ProcessMemory();

  // The most bytes that were resident at once. 0 with the address sanitizer, which keeps what has
  // been freed.
  std::uint64_t Peak() const;
};

}  // namespace quillon::testing
