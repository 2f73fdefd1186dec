// The numbers that members of the object tree fail with.
#pragma once

#include "desk/win32/CallErrors.h"

namespace desk {

enum class MapiError : unsigned long {
  kNoSupport = 0x80040102,
  kInvalidEntryId = 0x80040107,
  kInvalidObject = 0x80040108,
  kObjectDeleted = 0x8004010A,
  kNotFound = 0x8004010F,
  kLogonFailed = 0x80040111,
  kSessionLimit = 0x80040112,
  kUserCancel = 0x80040113,
  kDiskError = 0x80040116,
  kTooComplex = 0x80040117,
  kCollision = 0x80040604,
  kNotInitialized = 0x80040605,
  kNoRecipients = 0x80040607,
  kFolderCycle = 0x8004060B,
  kAmbiguousRecipient = 0x80040700,
  kCallFailed = 0x80004005,
  kNoAccess = 0x80070005,
  kInvalidParameter = 0x80070057,
};

// The published name of a number, or "Error" for one that has none here.
const char* NameOf(MapiError error) noexcept;

}  // namespace desk
