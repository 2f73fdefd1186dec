// Another program, run to its end.
#pragma once

#include <string>
#include <vector>

namespace quillon::bench {

struct ProgramRun {
  double seconds = 0;
  double peakMemory = 0;  // MB; at least what this process holds when it starts the other
};

// Runs a program, found along PATH, with a file for its standard input; what it prints is thrown
// away. Throws when it fails.
ProgramRun RunProgram(const std::vector<std::string>& words, const std::string& input);

}  // namespace quillon::bench
