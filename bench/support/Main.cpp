#include "bench/support/Main.h"

#include <cstdio>
#include <exception>

namespace quillon::bench {

int Main(const char* name, const std::function<int()>& run) {
  try {
    return run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", name, error.what());
    return 1;
  }
}

}  // namespace quillon::bench
