#include "core/AutomationValues.h"

#include <type_traits>

#include "core/ServerError.h"
#include "core/Text.h"
#include "core/Value.h"

namespace quillon {

namespace {

[[noreturn]] void TypeMismatch() {
  throw AutomationError(kAutomationTypeMismatch, "Type mismatch.");
}

// The value as one that the conversions for clients know; they have the same rules.
Value PlainValueOf(const AutomationValue& value) {
  return std::visit(
      [](const auto& held) -> Value {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, std::monostate> ||
                      std::is_same_v<Held, AutomationMissing>) {
          return std::monostate();
        } else if constexpr (std::is_same_v<Held, AutomationDate>) {
          return held.days;
        } else if constexpr (std::is_same_v<Held, AutomationObjectPtr>) {
          if (held != nullptr) TypeMismatch();
          return std::monostate();
        } else if constexpr (std::is_same_v<Held, std::vector<AutomationValue>>) {
          TypeMismatch();
        } else {
          return held;
        }
      },
      static_cast<const AutomationValue::variant&>(value));
}

template <typename Convert>
auto Converted(const AutomationValue& value, Convert convert) {
  try {
    return convert(PlainValueOf(value));
  } catch (const ConversionError&) {
    TypeMismatch();
  }
}

}  // namespace

std::string TextOf(const AutomationValue& value) {
  // A date has no text without a format.
  if (std::holds_alternative<AutomationDate>(value)) TypeMismatch();
  return Converted(value, ToText);
}

std::int32_t NumberOf(const AutomationValue& value) {
  return Converted(value, ToInt32);
}

double RealOf(const AutomationValue& value) {
  return Converted(value, ToDouble);
}

bool TruthOf(const AutomationValue& value) {
  if (const auto* const text = std::get_if<std::string>(&value)) {
    if (EqualsIgnoreCase(*text, "True")) return true;
    if (text->empty() || EqualsIgnoreCase(*text, "False")) return false;
  }
  return RealOf(value) != 0;
}

AutomationObjectPtr ObjectOf(const AutomationValue& value) {
  if (const auto* const object = std::get_if<AutomationObjectPtr>(&value)) return *object;
  const bool isNothing = std::holds_alternative<std::monostate>(value) ||
                         std::holds_alternative<AutomationMissing>(value);
  if (!isNothing) TypeMismatch();
  return nullptr;
}

AutomationArguments Arguments(std::initializer_list<AutomationValue> values) {
  AutomationArguments arguments;
  arguments.assign(values.begin(), values.end());
  return arguments;
}

}  // namespace quillon
