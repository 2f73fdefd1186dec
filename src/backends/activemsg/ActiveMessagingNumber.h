// The numbers of Active Messaging's failures.
#pragma once

#include <cstdint>

namespace quillon {

// The mail system's numbers that the program itself uses.
namespace active_messaging {
inline constexpr std::int32_t kUserAbort = 1;
inline constexpr std::int32_t kFailure = 2;
inline constexpr std::int32_t kAttachmentWriteFailure = 13;
inline constexpr std::int32_t kInvalidMessage = 17;
inline constexpr std::int32_t kInvalidRecipients = 25;
inline constexpr std::int32_t kBadFolderName = 50;
inline constexpr std::int32_t kCollision = 108;
inline constexpr std::int32_t kEndOfSession = 114;
inline constexpr std::int32_t kNoRecipients = 132;
inline constexpr std::int32_t kNotInitialized = 141;
inline constexpr std::int32_t kNoFolder = 170;

// MAPI_E_NOT_FOUND, which has a row of its own in the table of texts.
inline constexpr std::int32_t kNotFound = static_cast<std::int32_t>(0x8004010FU);
}  // namespace active_messaging

// What an automation error is in the mail system's numbers: for the published errors of MAPI that
// the table of texts has a row for, the row's number; any other stays as it came, but is never
// taken for a success.
std::int32_t ActiveMessagingNumber(std::int32_t automationError);

}  // namespace quillon
