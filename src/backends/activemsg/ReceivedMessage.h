// What the objects of received messages say, as the records of the program.
#pragma once

#include <cstdint>
#include <string>

#include "codec/HeaderTable.h"
#include "mail/LoadedMessage.h"
#include "mail/ReceivedFiles.h"
#include "ports/AutomationObject.h"

namespace quillon {

// A property that a message may lack; empty when it does.
AutomationValue OptionalProperty(AutomationObject& message, std::string_view property);

// Everything but the number; throws AutomationError.
HeaderRecord ReadHeader(AutomationObject& message, const std::string& dateFormat);

// Everything but the attachments; throws AutomationError.
LoadedMessage ReadMessage(AutomationObject& message, const std::string& dateFormat);

// Writes the files among the attachments; what is no file (a link, another message) is left out.
// Throws AutomationError, and number 13 when the directory takes no file.
void WriteAttachments(AutomationObject& message, FileSystem& system, ReceivedFiles& files);

}  // namespace quillon
