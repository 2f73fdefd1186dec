// Dates of automation as calendar dates and back, and as the text that a client wants.
#pragma once

#include <optional>
#include <string>

#include "codec/DateTime.h"
#include "ports/AutomationObject.h"

namespace quillon {

// No value for a date outside the years 100 to 9999, which automation does not have.
std::optional<DateTime> DateTimeOf(AutomationDate date);
AutomationDate AutomationDateOf(const DateTime& date);

// The date of a received message by a dateFormat property. A text that is no date stays as it is;
// "NATIVE" leaves every text so, and gives a date the format "General Date". Empty for no date:
// nothing at all, or day 0.
std::string ReceivedDateText(const AutomationValue& date, const std::string& dateFormat);

}  // namespace quillon
