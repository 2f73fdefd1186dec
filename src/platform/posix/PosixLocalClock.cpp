#include "platform/Platform.h"
#include "platform/posix/PosixLocalTime.h"
#include "ports/LocalClock.h"

namespace quillon {
namespace {

class PosixLocalClock final : public LocalClock {
 public:
  LocalTime Now() const override { return ToLocalTime(std::time(nullptr)); }
};

}  // namespace

LocalTime ToLocalTime(std::time_t time) {
  std::tm local{};
  ::localtime_r(&time, &local);
  return {local.tm_year + 1900, local.tm_mon + 1,
          local.tm_mday,        local.tm_wday,
          local.tm_hour,        local.tm_min,
          local.tm_sec,         static_cast<int>(local.tm_gmtoff / 60)};
}

std::unique_ptr<LocalClock> MakeLocalClock() {
  return std::make_unique<PosixLocalClock>();
}

}  // namespace quillon
