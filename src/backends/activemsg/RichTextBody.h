// A body in rich text, which the library of Active Messaging cannot store by itself.
#pragma once

#include <string>
#include <string_view>

#include "backends/activemsg/MessageDraft.h"
#include "ports/MessageBox.h"
#include "ports/RichTextLibrary.h"

namespace quillon {

// Whether a body is to be stored as rich text.
bool IsRichText(std::string_view body);

struct RichTextPorts {
  RichTextLibrary& library;
  MessageBoxPort& messageBox;
};

// Stores the body of a message of `messages` that has been saved, and fetches the message again
// with what was stored. When it cannot be stored the user is told, whether he wants to see errors
// or not, and the message goes without. Throws AutomationError.
void StoreRichText(const RichTextPorts& ports, AutomationObject& session,
                   const std::string& profile, AutomationObject& messages, MessageDraft& draft,
                   const std::string& body);

}  // namespace quillon
