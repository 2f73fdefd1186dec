// What the documents of received messages say, as the records of the program.
#pragma once

#include <string>

#include "codec/HeaderTable.h"
#include "mail/LoadedMessage.h"
#include "mail/ReceivedFiles.h"
#include "ports/AutomationObject.h"

namespace quillon {

// Everything but the number; throws AutomationError.
HeaderRecord ReadNotesHeader(AutomationObject& document, const std::string& dateFormat);

// Everything but the attachments; throws AutomationError.
LoadedMessage ReadNotesMessage(AutomationObject& document, const std::string& dateFormat);

// Writes the files among the attachments; embedded objects of other programs are left out. Throws
// AutomationError, with number 13 when the directory takes no file.
void ExtractFiles(AutomationObject& document, FileSystem& system, ReceivedFiles& files);

}  // namespace quillon
