#include "server/NamedDateFormat.h"

#include <array>
#include <cmath>
#include <string_view>

#include "core/ServerError.h"
#include "core/Text.h"
#include "server/ErrorTable.h"

namespace quillon {

namespace {

constexpr std::array<std::string_view, 6> kNames{
    "General Date", "Short Date", "Medium Date", "Long Date", "NATIVE", "FIXED",
};

}  // namespace

std::string DateFormatFromValue(const Value& value) {
  if (!IsNumeric(value)) return ToText(value);
  double number = -1;
  try {
    number = std::nearbyint(ToDouble(value));
  } catch (const ConversionError&) {
    // a number too large for anything
  }
  if (!(number >= 0 && number < static_cast<double>(kNames.size()))) {
    throw ServerError(error_code::kInvalidValue);
  }
  return std::string(kNames[static_cast<std::size_t>(number)]);
}

Value DateFormatValue(const std::string& format) {
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if (EqualsIgnoreCase(kNames[i], format)) return static_cast<std::int16_t>(i);
  }
  return format;
}

}  // namespace quillon
