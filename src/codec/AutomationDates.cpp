#include "codec/AutomationDates.h"

#include <chrono>
#include <cmath>

#include "codec/DateFormat.h"
#include "core/AutomationValues.h"
#include "core/Text.h"

namespace quillon {

namespace {

using std::chrono::sys_days;

constexpr sys_days kDayZero = std::chrono::year(1899) / 12 / 30;
constexpr double kFirstDay = -657434;  // of the year 100
constexpr double kEndOfDays = 2958466;
constexpr int kSecondsPerDay = 24 * 60 * 60;

}  // namespace

std::optional<DateTime> DateTimeOf(AutomationDate date) {
  if (!(date.days > kFirstDay - 1 && date.days < kEndOfDays)) return std::nullopt;
  double wholeDays = 0;
  // Before day zero, too, the fraction counts from midnight on.
  const auto time = std::fabs(std::modf(date.days, &wholeDays));
  auto day = kDayZero + std::chrono::days(static_cast<int>(wholeDays));
  auto seconds = static_cast<int>(std::lround(time * kSecondsPerDay));
  if (seconds == kSecondsPerDay) {
    seconds = 0;
    day += std::chrono::days(1);
  }
  const std::chrono::year_month_day calendar(day);
  if (static_cast<int>(calendar.year()) > 9999) return std::nullopt;
  return DateTime{static_cast<int>(calendar.year()),
                  static_cast<int>(static_cast<unsigned>(calendar.month())),
                  static_cast<int>(static_cast<unsigned>(calendar.day())),
                  seconds / 3600,
                  seconds / 60 % 60,
                  seconds % 60};
}

AutomationDate AutomationDateOf(const DateTime& date) {
  const sys_days day = std::chrono::year(date.year) /
                       std::chrono::month(static_cast<unsigned>(date.month)) /
                       std::chrono::day(static_cast<unsigned>(date.day));
  const auto days = static_cast<double>((day - kDayZero).count());
  const auto time =
      static_cast<double>((date.hour * 60 + date.minute) * 60 + date.second) / kSecondsPerDay;
  return {days < 0 ? days - time : days + time};
}

std::string ReceivedDateText(const AutomationValue& date, const std::string& dateFormat) {
  const bool native = EqualsIgnoreCase(dateFormat, "NATIVE");
  if (const auto* const value = std::get_if<AutomationDate>(&date)) {
    const auto dateTime = value->days == 0 ? std::nullopt : DateTimeOf(*value);
    if (!dateTime) return {};
    return FormatReceivedDate(*dateTime, native ? std::string() : dateFormat);
  }
  const auto text = TextOf(date);
  const auto dateTime = native ? std::nullopt : ParseDate(text);
  return dateTime ? FormatReceivedDate(*dateTime, dateFormat) : text;
}

}  // namespace quillon
