// The place of a post in its conversation.
#pragma once

#include <string>
#include <string_view>

#include "ports/AutomationObject.h"

namespace quillon {

// By the property ConversationIndex: empty for a new conversation; an index with the marker
// "::REPLY" behind it for an answer to that message; anything else is the index itself. Throws
// AutomationError.
std::string MakeConversationIndex(AutomationObject& session, std::string_view property);

// What a conversation is called: the subject without the mark of an answer.
std::string ConversationTopic(std::string_view subject);

}  // namespace quillon
