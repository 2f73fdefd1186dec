// The dateFormat property: six named formats that clients may give and get by number, or any format
// of their own.
#pragma once

#include <string>

#include "core/Value.h"

namespace quillon {

// The stored text for a number 0 to 5 or a text; throws 529 for another number.
std::string DateFormatFromValue(const Value& value);

// The number of a named format (in any case), else the text itself.
Value DateFormatValue(const std::string& format);

}  // namespace quillon
