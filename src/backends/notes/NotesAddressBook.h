// Names in the address books of a Notes client.
#pragma once

#include <string>

#include "ports/AutomationObject.h"

namespace quillon {

struct NotesEntry {
  std::string name;
  std::string address;  // on the Internet or in another mail system; may be empty
};

// What a document of an address book tells: of a person or of a group.
NotesEntry ReadNotesEntry(AutomationObject& document);

// The view of all names of an address book, which is opened for it; null when there is none. A
// document is in it once for each of its names.
AutomationObjectPtr OpenUsersView(AutomationObject& book);

// The person or group that the name stands for, in the first address book that has it. An address
// with "@" that no book has stands for itself. Throws AutomationError: 4294 when there is none,
// 4295 when there are several.
NotesEntry FindInAddressBooks(AutomationObject& session, const std::string& name);

}  // namespace quillon
