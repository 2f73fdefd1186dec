// The rules of the plain properties, one row each: where the value is kept, of what type it is, and
// what may be put.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "mail/InstanceState.h"
#include "mail/SharedState.h"
#include "server/Property.h"

namespace quillon {

enum class PropertyRule {
  Text,     // any text
  Flag,     // a short boolean: -1 or 0
  Range,    // a number from `lowest` to `highest`
  Number,   // any number of the type
  Special,  // has a rule of its own, see ServerProperties.cpp
};

using PropertySlot =
    std::variant<std::monostate, std::string InstanceState::*, std::int16_t InstanceState::*,
                 std::int32_t InstanceState::*, float InstanceState::*,
                 std::string MessageBuffers::*, ShortBool MessageBuffers::*,
                 ShortBool InternetSettings::*, std::int32_t InternetSettings::*,
                 std::uint16_t InternetSettings::*, std::int32_t SharedState::*,
                 std::optional<std::string> InternetAccess::*,
                 std::optional<std::int16_t> InternetAccess::*, std::string ConnectionReport::*>;

struct PropertyRow {
  Property property;
  const char* name;
  PropertyRule rule;
  PropertySlot slot;
  double lowest = 0;
  double highest = 0;
};

const PropertyRow& RowOf(Property property);

// The variable behind a slot. An optional one has a value when a client has put it.
using PropertyVariable =
    std::variant<std::monostate, std::string*, std::int16_t*, std::uint16_t*, std::int32_t*, float*,
                 std::optional<std::string>*, std::optional<std::int16_t>*>;
PropertyVariable VariableOf(const PropertyRow& row, InstanceState& instance, SharedState& shared);

}  // namespace quillon
