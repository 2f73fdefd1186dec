#include "codec/HeaderDate.h"

#include <algorithm>
#include <array>
#include <optional>

#include "codec/DateFormat.h"
#include "codec/DateTime.h"
#include "core/Text.h"

namespace quillon {
namespace {

constexpr std::array<std::string_view, 12> kMonths = {"JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                                                      "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};
constexpr std::string_view kWhiteSpace = " \t";

// A date has at most six words; what else is looked at is the remark of some mail system.
using Words = std::array<std::string_view, 21>;

// The words between white space; those behind the end of the text are empty.
Words SplitWords(std::string_view text) {
  Words words;
  for (std::string_view& word : words) {
    text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
    word = text.substr(0, text.find_first_of(kWhiteSpace));
    text.remove_prefix(word.size());
  }
  return words;
}

std::optional<DateTime> ReadHeaderDate(std::string_view text) {
  const Words words = SplitWords(text);
  const size_t day = MonthNumber(words[2]).empty() ? 0 : 1;
  const std::string month = MonthNumber(words[day + 1]);
  if (month.empty()) return std::nullopt;
  std::string_view year = words[day + 2];
  if (year.size() == 4) year.remove_prefix(2);
  std::string_view time = words[day + 3];
  if (time.ends_with(',')) time.remove_suffix(1);
  std::string joined = month;
  for (const std::string_view piece : {std::string_view("/"), words[day], std::string_view("/"),
                                       year, std::string_view(" "), time}) {
    joined += piece;
  }
  return ParseDate(joined);
}

}  // namespace

std::string MonthNumber(std::string_view monthName) {
  for (size_t i = 0; i < kMonths.size(); ++i) {
    if (EqualsIgnoreCase(monthName, kMonths[i])) return (i < 9 ? "0" : "") + std::to_string(i + 1);
  }
  return {};
}

std::string ConvertHeaderDate(std::string_view dateText, std::string_view dateFormat) {
  const std::string_view text = Trim(dateText);
  if (EqualsIgnoreCase(dateFormat, "NATIVE")) return std::string(text);
  const std::optional<DateTime> date = ReadHeaderDate(text);
  return date ? FormatReceivedDate(*date, dateFormat) : std::string(text);
}

}  // namespace quillon
