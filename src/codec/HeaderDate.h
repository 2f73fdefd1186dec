// The date of a received message, as the client wants to see it.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

// "01" to "12" for the three letters of a month in any case; else the empty text.
std::string MonthNumber(std::string_view monthName);

// The value of a "Date" field (RFC 5322, section 3.3: an optional weekday, day, month, year, time,
// zone) in the format of the dateFormat property; the zone is not taken into account. "NATIVE" and
// a date that cannot be read give the text as it is, trimmed. docs/dates.md has the details.
std::string ConvertHeaderDate(std::string_view dateText, std::string_view dateFormat);

}  // namespace quillon
