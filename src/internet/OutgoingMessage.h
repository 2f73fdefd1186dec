// The message that the SMTP session transmits, and its header block. All texts are bytes as they go
// out.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mail/SharedState.h"
#include "platform/LocalClock.h"

namespace quillon {

struct OutgoingMessage {
  std::string from;  // with or without a display name
  std::vector<std::string> whoTo;
  std::vector<std::string> cc;
  std::vector<std::string> bcc;
  std::string subject;
  std::string body;
  std::string replyTo;
  std::string charset;
  std::string xMailer;
  std::vector<XHeader> xHeaders;
  std::int16_t importance = 3;
  bool certify = false;
  float utcOffset = 0;       // hours, or kUtcOffsetNotSet: that of the clock
  std::string version;       // of the program
  std::string specialBuild;  // may be empty
};

// The header fields in their fixed order, each with its CR LF, and the empty line after them.
std::string BuildHeaderBlock(const OutgoingMessage& message, const LocalTime& now);

}  // namespace quillon
