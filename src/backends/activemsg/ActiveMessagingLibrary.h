// The library of Active Messaging: whether it is there and new enough, and the one session object
// that the process works with.
#pragma once

#include "ports/AutomationObject.h"

namespace quillon {

class ActiveMessagingLibrary {
 public:
  explicit ActiveMessagingLibrary(AutomationObjects& objects) : objects_(objects) {}

  // From version 1.1 on. The verdict is found once and kept for the life of the process.
  bool Available();

  // The session object, made when there is none; throws AutomationError.
  AutomationObjectPtr Session();

  // Forgets the object, and keeps the verdict.
  void Release() { session_ = nullptr; }

 private:
  void TryMakeSession();

  AutomationObjects& objects_;
  AutomationObjectPtr session_;
  float version_ = 0;
  bool probed_ = false;
  bool available_ = false;
};

}  // namespace quillon
