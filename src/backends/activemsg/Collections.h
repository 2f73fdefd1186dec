// Walks through the collections of an object, by count or from one item to the next.
#pragma once

#include <cstdint>
#include <functional>

#include "ports/AutomationObject.h"

namespace quillon {

// Calls `visit` with each item until it returns false. Their numbers are a claim: the walk ends
// with the first item that is not there.
void ForEachItem(AutomationObject& collection,
                 const std::function<bool(const AutomationObjectPtr&)>& visit);

// The same with "GetFirst" and "GetNext", for at most so many items: a collection that never ends
// is not walked for ever.
void ForEachInTurn(AutomationObject& collection, std::int32_t most,
                   const std::function<bool(const AutomationObjectPtr&)>& visit);

// An object that a property or a call gives; throws AutomationError when it gives none.
AutomationObjectPtr RequireObject(const AutomationValue& value);

}  // namespace quillon
