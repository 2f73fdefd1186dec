// A message that is being made. Whatever ends the making before it has left, it is deleted: it
// would otherwise lie in a folder from which it could be sent later, half-made.
#pragma once

#include <utility>

#include "ports/AutomationObject.h"

namespace quillon {

class MessageDraft {
 public:
  // Adds a message to a collection of messages; throws AutomationError.
  explicit MessageDraft(AutomationObject& messages);
  ~MessageDraft();
  MessageDraft(const MessageDraft&) = delete;
  MessageDraft& operator=(const MessageDraft&) = delete;

  AutomationObject* operator->() const noexcept { return message_.get(); }
  AutomationObject& operator*() const noexcept { return *message_; }

  // Another object for the same message.
  void Refetched(AutomationObjectPtr message) { message_ = std::move(message); }

  // It has left, and is nobody's draft any more.
  AutomationObjectPtr Release() noexcept { return std::exchange(message_, nullptr); }

 private:
  AutomationObjectPtr message_;
};

}  // namespace quillon
