// A message that a back end has read, before it takes the place of the current one.
#pragma once

#include <string>
#include <vector>

#include "mail/SharedState.h"

namespace quillon {

struct LoadedMessage {
  std::vector<std::string> to;
  std::vector<std::string> cc;
  std::vector<std::string> bcc;
  std::string from;
  std::string subject;
  std::string body;
  std::string html;        // empty: there is none, or too much of it
  std::string dateText;    // formatted by dateFormat
  std::string rawHeaders;  // as MessageBuffers has them
  std::vector<Attachment> attachments;
};

// What the message before has had besides goes too.
void MakeCurrent(MessageBuffers& message, LoadedMessage loaded);

}  // namespace quillon
