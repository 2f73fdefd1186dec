#include "support/ProcessMemory.h"

#ifdef _WIN32
#define PSAPI_VERSION 2  // the functions of kernel32
#include <windows.h>
#include <psapi.h>
#elif !defined(__SANITIZE_ADDRESS__)
#include <fstream>
#include <string>
#endif

namespace quillon::testing {

namespace {

#ifdef _WIN32
// The system has no such thing: what was taken before counts too.
void ForgetPeak() {}

std::uint64_t ReadPeak() {
  PROCESS_MEMORY_COUNTERS counters{};
  ::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof(counters));
  return counters.PeakWorkingSetSize;
}
#elif defined(__SANITIZE_ADDRESS__)
// The sanitizer keeps what is freed for a while: the other build measures.
void ForgetPeak() {}

std::uint64_t ReadPeak() {
  return 0;
}
#else
// proc(5): the peak is the present size again.
void ForgetPeak() {
  std::ofstream("/proc/self/clear_refs") << "5";
}

std::uint64_t ReadPeak() {
  std::ifstream status("/proc/self/status");
  std::uint64_t kilobytes = 0;
  for (std::string word; status >> word && word != "VmHWM:";) {
  }
  status >> kilobytes;
  return kilobytes * 1024;
}
#endif

}  // namespace

ProcessMemory::ProcessMemory() {
  ForgetPeak();
}

std::uint64_t ProcessMemory::Peak() const {
  return ReadPeak();
}

}  // namespace quillon::testing
