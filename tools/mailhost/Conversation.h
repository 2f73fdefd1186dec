// A conversation script: what the host says to a client and what it must hear, word for word.
//
// The form of a script is told in docs/mailhost.md.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Escapes.h"
#include "Log.h"
#include "Outbox.h"

namespace mailhost {

struct ConversationStep {
  enum class Kind { kSend, kExpect, kContent, kWait, kClose, kShape };

  Kind kind{};
  std::size_t line = 0;               // of the file, from 1
  std::string text{};                 // what kSend sends; what kExpect was written as
  std::optional<Pattern> pattern{};   // of kExpect
  std::chrono::milliseconds wait{0};  // of kWait
  Shape shape{};                      // of kShape
};

struct Conversation {
  std::string file;
  Protocol protocol{};
  std::vector<ConversationStep> steps{};
};

// True for a text whose first line that is no comment says "protocol ...".
bool IsConversation(std::string_view text);

// Throws UsageError with the place in `file`.
Conversation ParseConversation(const std::string& file, std::string_view text);

}  // namespace mailhost
