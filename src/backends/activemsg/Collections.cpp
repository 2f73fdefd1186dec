#include "backends/activemsg/Collections.h"

#include "backends/activemsg/ActiveMessagingNumber.h"
#include "core/AutomationValues.h"

namespace quillon {

namespace {

constexpr auto kBadIndex = static_cast<std::int32_t>(0x8002000BU);  // DISP_E_BADINDEX

// Null behind the last one.
AutomationObjectPtr ItemOf(AutomationObject& collection, std::int32_t index) {
  try {
    return ObjectOf(collection.Get("Item", Arguments({index})));
  } catch (const AutomationError& error) {
    if (error.Number() != kBadIndex) throw;
    return nullptr;
  }
}

}  // namespace

void ForEachItem(AutomationObject& collection,
                 const std::function<bool(const AutomationObjectPtr&)>& visit) {
  const auto count = NumberOf(collection.Get("Count"));
  for (std::int32_t index = 1; index <= count; ++index) {
    const auto item = ItemOf(collection, index);
    if (item == nullptr || !visit(item)) return;
  }
}

void ForEachInTurn(AutomationObject& collection, std::int32_t most,
                   const std::function<bool(const AutomationObjectPtr&)>& visit) {
  for (std::int32_t seen = 0; seen < most; ++seen) {
    const auto item = ObjectOf(collection.Call(seen == 0 ? "GetFirst" : "GetNext"));
    if (item == nullptr || !visit(item)) return;
  }
}

AutomationObjectPtr RequireObject(const AutomationValue& value) {
  auto object = ObjectOf(value);
  if (object == nullptr) {
    throw AutomationError(active_messaging::kFailure, "There is no such object.");
  }
  return object;
}

}  // namespace quillon
