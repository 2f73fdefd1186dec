#include "mail/LoadedMessage.h"

#include <utility>

namespace quillon {

void MakeCurrent(MessageBuffers& message, LoadedMessage loaded) {
  message.to = std::move(loaded.to);
  message.cc = std::move(loaded.cc);
  message.bcc = std::move(loaded.bcc);
  message.from = std::move(loaded.from);
  message.subject = std::move(loaded.subject);
  message.body = std::move(loaded.body);
  message.html.clear();
  message.receivedHtml = std::move(loaded.html);
  message.dateSent = std::move(loaded.dateText);
  message.rawHeaders = std::move(loaded.rawHeaders);
  message.attachments = std::move(loaded.attachments);
  message.alternatives.clear();
  message.xHeaders.clear();
  message.headers.clear();
}

}  // namespace quillon
