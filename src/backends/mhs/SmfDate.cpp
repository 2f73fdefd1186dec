#include "backends/mhs/SmfDate.h"

#include "codec/DateFormat.h"
#include "codec/HeaderDate.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr const char* kFirstYear = "80";  // of the last century

}  // namespace

std::string FormatSmfDate(const DateTime& date) {
  return FormatDate(date, "dd-mmm-yy hh:nn:ss");
}

std::optional<DateTime> ParseSmfDate(std::string_view text) {
  text = Trim(text);
  const auto end = text.find(' ');
  const auto parts = Split(text.substr(0, end), "-");
  if (parts.size() != 3) return std::nullopt;
  const auto month = MonthNumber(parts[1]);
  if (month.empty()) return std::nullopt;
  auto year = parts[2];
  if (year.size() == 2) year = (year < kFirstYear ? "20" : "19") + year;
  const auto rest = end == std::string_view::npos ? std::string_view() : Trim(text.substr(end));
  return ParseDate(month + "/" + parts[0] + "/" + year + " " +
                   std::string(rest.substr(0, rest.find(' '))));
}

}  // namespace quillon
