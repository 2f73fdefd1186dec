// The wall clock: the local time and how far it is from UTC.
#pragma once

namespace quillon {

struct LocalTime {
  int year = 1970;
  int month = 1;    // 1 to 12
  int day = 1;      // 1 to 31
  int weekday = 4;  // 0 Sunday to 6 Saturday
  int hour = 0;
  int minute = 0;
  int second = 0;
  int utcOffset = 0;  // minutes east of UTC
};

class LocalClock {
 public:
  virtual ~LocalClock() = default;
  virtual LocalTime Now() const = 0;
};

}  // namespace quillon
