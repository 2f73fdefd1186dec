#include "codec/DateTime.h"

#include <array>
#include <charconv>

#include "core/Text.h"

namespace quillon {
namespace {

// The first year of the hundred that years of two digits stand for.
constexpr int kCenturyStart = 1930;

constexpr std::array<int, 13> kDaysBefore = {0,   31,  59,  90,  120, 151, 181,
                                             212, 243, 273, 304, 334, 365};

bool IsLeapYear(int year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// Takes a number of up to `digits` digits off the start of the text.
bool TakeNumber(std::string_view& text, size_t digits, int& number) {
  const std::string_view head = text.substr(0, digits);
  if (head.empty() || head.front() < '0' || head.front() > '9') return false;
  const auto parsed = std::from_chars(head.data(), head.data() + head.size(), number);
  text.remove_prefix(static_cast<size_t>(parsed.ptr - head.data()));
  return true;
}

bool Take(std::string_view& text, char character) {
  if (!text.starts_with(character)) return false;
  text.remove_prefix(1);
  return true;
}

// Hours of the 12-hour clock become those of the 24-hour clock.
bool ReadHalfOfDay(std::string_view text, int& hour) {
  const bool afternoon = EqualsIgnoreCase(text, "PM");
  if (!afternoon && !EqualsIgnoreCase(text, "AM")) return false;
  if (hour < 1 || hour > 12) return false;
  hour = hour % 12 + (afternoon ? 12 : 0);
  return true;
}

bool ReadTime(std::string_view text, DateTime& date) {
  if (!TakeNumber(text, 2, date.hour) || !Take(text, ':') || !TakeNumber(text, 2, date.minute)) {
    return false;
  }
  if (Take(text, ':') && !TakeNumber(text, 2, date.second)) return false;
  text = Trim(text);
  if (!text.empty() && !ReadHalfOfDay(text, date.hour)) return false;
  return date.hour < 24 && date.minute < 60 && date.second < 60;
}

// Three numbers; a first one of four digits is the year.
bool ReadDay(std::string_view text, DateTime& date) {
  const char separator = text.find('/') != std::string_view::npos ? '/' : '-';
  const bool yearFirst = text.find(separator) == 4;
  int& first = yearFirst ? date.year : date.month;
  int& second = yearFirst ? date.month : date.day;
  int& third = yearFirst ? date.day : date.year;
  const std::string_view whole = text;
  if (!TakeNumber(text, 4, first) || !Take(text, separator) || !TakeNumber(text, 2, second) ||
      !Take(text, separator) || !TakeNumber(text, 4, third) || !text.empty()) {
    return false;
  }
  const size_t yearDigits = yearFirst ? 4 : whole.size() - whole.rfind(separator) - 1;
  if (yearDigits < 3) date.year += date.year < kCenturyStart % 100 ? 2000 : 1900;
  // Programs that count years from 1900 went on to three digits (RFC 5322, section 4.3).
  if (yearDigits == 3) date.year += 1900;
  return date.year >= 100 && date.month >= 1 && date.month <= 12 && date.day >= 1 &&
         date.day <= DaysInMonth(date.year, date.month);
}

}  // namespace

int DaysInMonth(int year, int month) {
  const auto index = static_cast<size_t>(month);
  const int days = kDaysBefore[index] - kDaysBefore[index - 1];
  return month == 2 && IsLeapYear(year) ? days + 1 : days;
}

int Weekday(const DateTime& date) {
  const int before = date.year - 1;
  return (before + before / 4 - before / 100 + before / 400 + DayOfYear(date)) % 7;
}

int DayOfYear(const DateTime& date) {
  const int leapDay = date.month > 2 && IsLeapYear(date.year) ? 1 : 0;
  return kDaysBefore[static_cast<size_t>(date.month - 1)] + leapDay + date.day;
}

std::optional<DateTime> ParseDate(std::string_view text) {
  text = Trim(text);
  const std::string_view day = text.substr(0, text.find(' '));
  const std::string_view time = Trim(text.substr(day.size()));
  DateTime date;
  if (!ReadDay(day, date) || (!time.empty() && !ReadTime(time, date))) return std::nullopt;
  return date;
}

}  // namespace quillon
