// Dates as values, and dates in text form as the US English settings of Windows read them.
#pragma once

#include <optional>
#include <string_view>

namespace quillon {

struct DateTime {
  int year = 1970;  // 100 to 9999
  int month = 1;    // 1 to 12
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
};

int DaysInMonth(int year, int month);
// 0 Sunday to 6 Saturday.
int Weekday(const DateTime& date);
// 1 for the first of January.
int DayOfYear(const DateTime& date);

// Reads "month/day/year" or "year/month/day" ("-" will do for "/"), with a time
// "hour:minute[:second]" after it, which may end in AM or PM. A year below 100 is one of 1930 to
// 2029. No value for anything else, or when the date does not exist.
std::optional<DateTime> ParseDate(std::string_view text);

}  // namespace quillon
