#include <windows.h>

#include "platform/LocalClock.h"

namespace quillon {
namespace {

// The difference of the two clocks is the offset that holds now, whatever rule of summer time made
// it.
int UtcOffsetMinutes(const SYSTEMTIME& utc, const SYSTEMTIME& local) {
  FILETIME utcFile{};
  FILETIME localFile{};
  ::SystemTimeToFileTime(&utc, &utcFile);
  ::SystemTimeToFileTime(&local, &localFile);
  const auto ticks = [](const FILETIME& time) {
    return static_cast<long long>((static_cast<unsigned long long>(time.dwHighDateTime) << 32) |
                                  time.dwLowDateTime);
  };
  constexpr long long kTicksPerMinute = 600'000'000;
  return static_cast<int>((ticks(localFile) - ticks(utcFile)) / kTicksPerMinute);
}

class Win32LocalClock final : public LocalClock {
 public:
  LocalTime Now() const override {
    SYSTEMTIME utc{};
    SYSTEMTIME local{};
    ::GetSystemTime(&utc);
    ::SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local);
    return {local.wYear, local.wMonth,  local.wDay,    local.wDayOfWeek,
            local.wHour, local.wMinute, local.wSecond, UtcOffsetMinutes(utc, local)};
  }
};

}  // namespace

std::unique_ptr<LocalClock> MakeLocalClock() {
  return std::make_unique<Win32LocalClock>();
}

}  // namespace quillon
