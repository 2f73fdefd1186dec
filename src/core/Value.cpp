#include "core/Value.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <string_view>
#include <type_traits>

#include "core/ServerError.h"
#include "core/Text.h"

namespace quillon {

namespace {

[[noreturn]] void TypeMismatch() {
  throw ConversionError(ConversionError::Reason::TypeMismatch);
}
[[noreturn]] void Overflow() {
  throw ConversionError(ConversionError::Reason::Overflow);
}

std::optional<double> ParseRadix(std::string_view digits, int base) {
  std::uint32_t number = 0;
  const auto* end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, number, base);
  if (digits.empty() || error != std::errc() || stop != end) return std::nullopt;
  return static_cast<double>(static_cast<std::int32_t>(number));
}

// A number as a script writes it: blanks around, a sign, decimals, an exponent, or &H and &O
// digits.
std::optional<double> ParseNumber(std::string_view text) {
  text = Trim(text);
  if (text.size() > 2 && text[0] == '&') {
    if (text[1] == 'H' || text[1] == 'h') return ParseRadix(text.substr(2), 16);
    if (text[1] == 'O' || text[1] == 'o') return ParseRadix(text.substr(2), 8);
    return std::nullopt;
  }
  if (!text.empty() && text[0] == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text[0] == '-') return std::nullopt;
  }
  const bool digit = text.find_first_of("0123456789") != std::string_view::npos;
  if (!digit || text.find_first_not_of("+-.0123456789eE") != std::string_view::npos) {
    return std::nullopt;
  }
  double number = 0;
  const auto* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc::result_out_of_range) Overflow();
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

double RoundHalfEven(double number) {
  const double floor = std::floor(number);
  const double fraction = number - floor;
  if (fraction < 0.5) return floor;
  if (fraction > 0.5) return floor + 1;
  return std::fmod(floor, 2.0) == 0.0 ? floor : floor + 1;
}

template <typename Integer>
Integer ToInteger(const Value& value) {
  const double number = RoundHalfEven(ToDouble(value));
  if (!(number >= static_cast<double>(std::numeric_limits<Integer>::min()) &&
        number <= static_cast<double>(std::numeric_limits<Integer>::max()))) {
    Overflow();
  }
  return static_cast<Integer>(number);
}

std::string FormatNumber(double number, int digits) {
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.*G", digits, number);
  return buffer;
}

}  // namespace

double ToDouble(const Value& value) {
  return std::visit(
      [](const auto& held) -> double {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, std::monostate>) {
          return 0;
        } else if constexpr (std::is_same_v<Held, NullValue>) {
          TypeMismatch();
        } else if constexpr (std::is_same_v<Held, bool>) {
          return held ? -1 : 0;
        } else if constexpr (std::is_same_v<Held, std::string>) {
          const auto number = ParseNumber(held);
          if (!number) TypeMismatch();
          return *number;
        } else {
          return static_cast<double>(held);
        }
      },
      value);
}

std::int16_t ToInt16(const Value& value) {
  return ToInteger<std::int16_t>(value);
}
std::int32_t ToInt32(const Value& value) {
  return ToInteger<std::int32_t>(value);
}

std::string ToText(const Value& value) {
  return std::visit(
      [](const auto& held) -> std::string {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, std::monostate>) {
          return {};
        } else if constexpr (std::is_same_v<Held, NullValue>) {
          TypeMismatch();
        } else if constexpr (std::is_same_v<Held, bool>) {
          return held ? "True" : "False";
        } else if constexpr (std::is_same_v<Held, std::string>) {
          return held;
        } else if constexpr (std::is_same_v<Held, float>) {
          return FormatNumber(static_cast<double>(held), 7);
        } else if constexpr (std::is_same_v<Held, double>) {
          return FormatNumber(held, 15);
        } else {
          return std::to_string(held);
        }
      },
      value);
}

bool IsNumeric(const Value& value) {
  if (const auto* text = std::get_if<std::string>(&value)) {
    try {
      return ParseNumber(*text).has_value();
    } catch (const ConversionError&) {
      return true;  // a number, only too large
    }
  }
  return !std::holds_alternative<NullValue>(value);
}

}  // namespace quillon
