// A value as an automation client passes or receives it, in plain C++: what a VARIANT holds, once
// the edge has taken it apart. Conversions follow the automation rules (a number text is read as a
// number, a fraction is rounded half to even, True is -1) and throw ConversionError.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace quillon {

struct NullValue {
  bool operator==(const NullValue&) const = default;
};

// std::monostate stands for an empty value (an unset variable); it converts to 0 and to "".
using Value = std::variant<std::monostate, NullValue, bool, std::int16_t, std::int32_t, float,
                           double, std::string>;

std::int16_t ToInt16(const Value& value);
std::int32_t ToInt32(const Value& value);
double ToDouble(const Value& value);
std::string ToText(const Value& value);

// Whether the value is a number, or a text that reads as one.
bool IsNumeric(const Value& value);

}  // namespace quillon
