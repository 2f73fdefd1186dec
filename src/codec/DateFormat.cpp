#include "codec/DateFormat.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "core/Text.h"

namespace quillon {
namespace {

constexpr std::array<std::string_view, 12> kMonths = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};
constexpr std::array<std::string_view, 7> kWeekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                       "Thursday", "Friday", "Saturday"};

struct NamedFormat {
  std::string_view name;
  std::string_view pattern;
};

constexpr std::array<NamedFormat, 7> kNamedFormats = {{
    {"General Date", "c"},
    {"Long Date", "dddddd"},
    {"Medium Date", "dd-mmm-yy"},
    {"Short Date", "ddddd"},
    {"Long Time", "ttttt"},
    {"Medium Time", "hh:nn AM/PM"},
    {"Short Time", "hh:nn"},
}};

enum class Kind {
  kOther,
  kHour,
  kMonthDigits,  // the minute when it follows an hour
  kHalfOfDay,    // turns the hours of the whole pattern to the 12-hour clock
};

// `hour` is on the clock that the pattern asks for.
using Render = std::string (*)(const DateTime& date, int hour);

struct Symbol {
  std::string_view text;  // upper case
  Kind kind;
  Render render;
};

struct Token {
  std::string_view
      text;  // as it stands in the pattern; of a literal without its quotes or backslash
  Kind kind = Kind::kOther;
  Render render = nullptr;  // null: the text itself
};

std::string Number(int number, size_t digits) {
  std::string text = std::to_string(number);
  if (text.size() < digits) text.insert(0, digits - text.size(), '0');
  return text;
}

std::string MonthName(const DateTime& date, int) {
  return std::string(kMonths[static_cast<size_t>(date.month - 1)]);
}

std::string WeekdayName(const DateTime& date, int) {
  return std::string(kWeekdays[static_cast<size_t>(Weekday(date))]);
}

// Weeks begin on Sunday; the first is the one with the first of January.
std::string WeekOfYear(const DateTime& date, int) {
  const int daysBefore = DayOfYear(date) - 1;
  const int firstWeekday = (Weekday(date) - daysBefore % 7 + 7) % 7;
  return Number((daysBefore + firstWeekday) / 7 + 1, 1);
}

std::string Minute(const DateTime& date, int) {
  return Number(date.minute, 1);
}
std::string Minute2(const DateTime& date, int) {
  return Number(date.minute, 2);
}

std::string HalfOfDay(const DateTime& date, int) {
  return date.hour < 12 ? "AM" : "PM";
}

int HourOfHalf(const DateTime& date) {
  return (date.hour + 11) % 12 + 1;
}

std::string ShortDate(const DateTime& date, int) {
  return Number(date.month, 1) + "/" + Number(date.day, 1) + "/" + Number(date.year, 4);
}

std::string LongDate(const DateTime& date, int hour) {
  return WeekdayName(date, hour) + ", " + MonthName(date, hour) + " " + Number(date.day, 1) + ", " +
         Number(date.year, 4);
}

std::string LongTime(const DateTime& date, int hour) {
  return Number(HourOfHalf(date), 1) + ":" + Minute2(date, hour) + ":" + Number(date.second, 2) +
         " " + HalfOfDay(date, hour);
}

std::string GeneralDate(const DateTime& date, int hour) {
  const bool midnight = date.hour == 0 && date.minute == 0 && date.second == 0;
  return ShortDate(date, hour) + (midnight ? "" : " " + LongTime(date, hour));
}

using D = const DateTime&;

// Longer symbols stand before those that they begin with.
constexpr std::array<Symbol, 28> kSymbols = {{
    {"AAAA", Kind::kOther, WeekdayName},
    {"AM/PM", Kind::kHalfOfDay, HalfOfDay},
    {"AMPM", Kind::kHalfOfDay, HalfOfDay},
    {"A/P", Kind::kHalfOfDay, [](D d, int hour) { return HalfOfDay(d, hour).substr(0, 1); }},
    {"C", Kind::kOther, GeneralDate},
    {"DDDDDD", Kind::kOther, LongDate},
    {"DDDDD", Kind::kOther, ShortDate},
    {"DDDD", Kind::kOther, WeekdayName},
    {"DDD", Kind::kOther, [](D d, int hour) { return WeekdayName(d, hour).substr(0, 3); }},
    {"DD", Kind::kOther, [](D d, int) { return Number(d.day, 2); }},
    {"D", Kind::kOther, [](D d, int) { return Number(d.day, 1); }},
    {"HH", Kind::kHour, [](D, int hour) { return Number(hour, 2); }},
    {"H", Kind::kHour, [](D, int hour) { return Number(hour, 1); }},
    {"MMMM", Kind::kOther, MonthName},
    {"MMM", Kind::kOther, [](D d, int hour) { return MonthName(d, hour).substr(0, 3); }},
    {"MM", Kind::kMonthDigits, [](D d, int) { return Number(d.month, 2); }},
    {"M", Kind::kMonthDigits, [](D d, int) { return Number(d.month, 1); }},
    {"NN", Kind::kOther, Minute2},
    {"N", Kind::kOther, Minute},
    {"Q", Kind::kOther, [](D d, int) { return Number((d.month + 2) / 3, 1); }},
    {"SS", Kind::kOther, [](D d, int) { return Number(d.second, 2); }},
    {"S", Kind::kOther, [](D d, int) { return Number(d.second, 1); }},
    {"TTTTT", Kind::kOther, LongTime},
    {"WW", Kind::kOther, WeekOfYear},
    {"W", Kind::kOther, [](D d, int) { return Number(Weekday(d) + 1, 1); }},
    {"YYYY", Kind::kOther, [](D d, int) { return Number(d.year, 4); }},
    {"YY", Kind::kOther, [](D d, int) { return Number(d.year % 100, 2); }},
    {"Y", Kind::kOther, [](D d, int) { return Number(DayOfYear(d), 1); }},
}};

const Symbol* FindSymbol(std::string_view pattern) {
  const auto* const found = std::find_if(kSymbols.begin(), kSymbols.end(), [&](const Symbol& s) {
    return EqualsIgnoreCase(pattern.substr(0, s.text.size()), s.text);
  });
  return found == kSymbols.end() ? nullptr : found;
}

// Takes a quoted text, an escaped character or any single character.
Token TakeLiteral(std::string_view& pattern) {
  if (pattern[0] == '"') {
    pattern.remove_prefix(1);
    const std::string_view text = pattern.substr(0, pattern.find('"'));
    pattern.remove_prefix(std::min(text.size() + 1, pattern.size()));
    return {text};
  }
  if (pattern[0] == '\\' && pattern.size() > 1) pattern.remove_prefix(1);
  const Token token{pattern.substr(0, 1)};
  pattern.remove_prefix(1);
  return token;
}

std::vector<Token> Tokens(std::string_view pattern) {
  std::vector<Token> tokens;
  Kind before = Kind::kOther;
  while (!pattern.empty()) {
    const Symbol* const symbol = FindSymbol(pattern);
    if (symbol == nullptr) {
      tokens.push_back(TakeLiteral(pattern));
      continue;
    }
    Token token{pattern.substr(0, symbol->text.size()), symbol->kind, symbol->render};
    if (token.kind == Kind::kMonthDigits && before == Kind::kHour) {
      token.render = token.text.size() == 1 ? Minute : Minute2;
    }
    before = token.kind;
    pattern.remove_prefix(token.text.size());
    tokens.push_back(token);
  }
  return tokens;
}

std::string TokenText(const Token& token, const DateTime& date, int hour) {
  if (token.render == nullptr) return std::string(token.text);
  std::string text = token.render(date, hour);
  const bool lower = token.kind == Kind::kHalfOfDay && token.text.front() == 'a';
  return lower ? LowerAscii(text) : text;
}

// The pattern of a named format; a pattern stands for itself.
std::string_view PatternOf(std::string_view format) {
  for (const NamedFormat& named : kNamedFormats) {
    if (EqualsIgnoreCase(format, named.name)) return named.pattern;
  }
  return format;
}

}  // namespace

std::string FormatDate(const DateTime& date, std::string_view format) {
  const std::vector<Token> tokens = Tokens(PatternOf(format));
  const bool halves = std::any_of(tokens.begin(), tokens.end(), [](const Token& token) {
    return token.kind == Kind::kHalfOfDay;
  });
  const int hour = halves ? HourOfHalf(date) : date.hour;
  std::string text;
  for (const Token& token : tokens) text += TokenText(token, date, hour);
  return text;
}

std::string FormatReceivedDate(const DateTime& date, std::string_view dateFormat) {
  if (dateFormat.empty()) return FormatDate(date, "General Date");
  if (EqualsIgnoreCase(dateFormat, "FIXED")) return FormatDate(date, "mmm dd, yyyy hh:nn:ss");
  return FormatDate(date, dateFormat);
}

}  // namespace quillon
