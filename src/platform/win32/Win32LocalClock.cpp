#include "platform/Platform.h"
#include "platform/win32/Win32LocalTime.h"

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
    ::GetSystemTime(&utc);
    return ToLocalTime(utc);
  }
};

}  // namespace

LocalTime ToLocalTime(const SYSTEMTIME& utc) {
  SYSTEMTIME local{};
  ::SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local);
  return {local.wYear, local.wMonth,  local.wDay,    local.wDayOfWeek,
          local.wHour, local.wMinute, local.wSecond, UtcOffsetMinutes(utc, local)};
}

std::unique_ptr<LocalClock> MakeLocalClock() {
  return std::make_unique<Win32LocalClock>();
}

}  // namespace quillon
