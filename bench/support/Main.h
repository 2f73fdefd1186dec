// What the main functions of the benchmarks have in common.
#pragma once

#include <functional>

namespace quillon::bench {

// Runs a benchmark and returns the exit status of the program: that of the run, or 1 when it
// throws, which is told on stderr.
int Main(const char* name, const std::function<int()>& run);

}  // namespace quillon::bench
