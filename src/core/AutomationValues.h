// What a foreign automation object answers, as the plain values that the callers work with.
//
// Conversions follow the automation rules (a number text is read as a number, True is -1). What is
// empty or missing, the null value included, is "", 0, False or no object. What does not convert
// throws AutomationError with kAutomationTypeMismatch.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

#include "ports/AutomationObject.h"

namespace quillon {

inline constexpr std::int32_t kAutomationTypeMismatch =
    static_cast<std::int32_t>(0x80020005U);  // DISP_E_TYPEMISMATCH

std::string TextOf(const AutomationValue& value);
std::int32_t NumberOf(const AutomationValue& value);
double RealOf(const AutomationValue& value);
bool TruthOf(const AutomationValue& value);
// Null for "Nothing".
AutomationObjectPtr ObjectOf(const AutomationValue& value);

// The arguments of a call, by position.
AutomationArguments Arguments(std::initializer_list<AutomationValue> values);

}  // namespace quillon
