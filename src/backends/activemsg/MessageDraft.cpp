#include "backends/activemsg/MessageDraft.h"

#include <exception>

#include "backends/activemsg/Collections.h"

namespace quillon {

MessageDraft::MessageDraft(AutomationObject& messages)
    : message_(RequireObject(messages.Call("Add"))) {}

MessageDraft::~MessageDraft() {
  if (message_ == nullptr) return;
  try {
    message_->Call("Delete");
  } catch (const std::exception&) {
    // Why it was not finished has been told.
  }
}

}  // namespace quillon
