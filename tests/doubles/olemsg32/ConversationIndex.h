// The index by which messages of a conversation are kept together.
#pragma once

#include <string>

namespace desk {

// The index of an answer to the message with that index, or for none of a new conversation: 22
// bytes as digits, and five more for each answer. Throws for a text that is no index.
std::string NewConversationIndex(const std::string& parent);

}  // namespace desk
