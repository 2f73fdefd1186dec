// The plain text that a message is sent with.
#pragma once

#include <string>

#include "mail/SharedState.h"

namespace quillon {

// That of the message, else that of its HTML.
std::string OutgoingText(const MessageBuffers& message);

}  // namespace quillon
