// What the objects of a Notes client hold, as plain values. A document has items; each has a list
// of values, which for most of them has one.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ports/AutomationObject.h"

namespace quillon {

// An object that a property or a call gives; throws AutomationError with these words when it gives
// none.
AutomationObjectPtr RequireNotesObject(const AutomationValue& value, const char* missing);

// The elements of a list; a single value is a list of one, nothing a list of none.
std::vector<AutomationValue> ElementsOf(const AutomationValue& value);

// The first value of an item, which may be missing, and all its texts that are not empty. What is
// neither text nor number counts as empty: an item comes from the message, which may hold anything.
AutomationValue ItemValue(AutomationObject& document, const char* item);
std::string ItemText(AutomationObject& document, const char* item);
std::vector<std::string> ItemTexts(AutomationObject& document, const char* item);

void PutItem(AutomationObject& document, const char* item, const AutomationValue& value);

// When the message was sent, or else delivered, or else made: a date or a text.
AutomationValue MessageDate(AutomationObject& document);

// Whether the user has read it; no value when the client cannot tell.
std::optional<bool> IsRead(AutomationObject& document);
void MarkRead(AutomationObject& document);

// Whether it has been deleted since it was found.
bool IsDeleted(AutomationObject& document);

// A hierarchical name as users write it: "Ann Bell/Sales/Acme" for "CN=Ann Bell/OU=Sales/O=Acme".
// Any other text stays.
std::string PlainName(std::string_view name);

}  // namespace quillon
