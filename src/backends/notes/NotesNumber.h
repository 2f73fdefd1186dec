// The numbers of the Notes client's failures.
#pragma once

#include <cstdint>

#include "ports/AutomationObject.h"

namespace quillon {

// Numbers of the program's own have the meaning that they have in Simple MAPI, whose texts are the
// ones that their public codes are decoded with; those from 4000 on are the client's.
namespace notes {
inline constexpr std::int32_t kFailure = 2;
inline constexpr std::int32_t kNoClient = 3;  // a logon failure
inline constexpr std::int32_t kAttachmentWriteFailure = 13;
inline constexpr std::int32_t kBadFolderName = 50;
inline constexpr std::int32_t kDatabaseNotOpen = 4063;
inline constexpr std::int32_t kNoSuchDocument = 4091;
inline constexpr std::int32_t kNoSuchName = 4294;
inline constexpr std::int32_t kAmbiguousName = 4295;
}  // namespace notes

// What an automation error is as the client's number: the low word where that is one of the
// client's (4000 to 6999), kFailure for a client that has gone. Any other stays as it came, but is
// never taken for a success.
std::int32_t NotesNumber(std::int32_t automationError);

// Whether the client, or the way to it, is there no more, so that every object of it is useless.
bool IsClientGone(const AutomationError& error);

// Whether the object does not know the member, as that of an older client may not.
bool IsUnknownMember(const AutomationError& error);

}  // namespace quillon
