// Dates as text: the named formats and the patterns that the dateFormat property may hold, in US
// English on every system. docs/dates.md lists them with their results.
#pragma once

#include <string>
#include <string_view>

#include "codec/DateTime.h"

namespace quillon {

// A named format ("General Date", "Long Time", ... in any case) or a pattern.
std::string FormatDate(const DateTime& date, std::string_view format);

// The same for a dateFormat property: empty means "General Date", "FIXED" the pattern "mmm dd, yyyy
// hh:nn:ss". What "NATIVE" asks for, the text as the mail system gave it, is up to the caller.
std::string FormatReceivedDate(const DateTime& date, std::string_view dateFormat);

}  // namespace quillon
