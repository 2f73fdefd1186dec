// Dates of SMF, as "25-May-93 11:16:18".
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "codec/DateTime.h"

namespace quillon {

std::string FormatSmfDate(const DateTime& date);

// With or without the time or its seconds; what follows is left out. A year of two digits is one of
// 1980 to 2079. No value for anything else, or when the date does not exist.
std::optional<DateTime> ParseSmfDate(std::string_view text);

}  // namespace quillon
