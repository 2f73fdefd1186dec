#include "mail/OutgoingText.h"

#include "codec/HtmlText.h"

namespace quillon {

std::string OutgoingText(const MessageBuffers& message) {
  return message.body.empty() ? PlainTextOfHtml(message.html) : message.body;
}

}  // namespace quillon
