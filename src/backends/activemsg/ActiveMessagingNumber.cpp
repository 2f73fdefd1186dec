#include "backends/activemsg/ActiveMessagingNumber.h"

#include <algorithm>
#include <array>

#include "mail/MailResult.h"

namespace quillon {

namespace {

struct NumberRow {
  std::uint32_t published;
  std::int32_t number;
};

constexpr std::array kNumbers{
    NumberRow{0x80004002, 120},  // E_NOINTERFACE: MAPI_E_INTERFACE_NOT_SUPPORTED
    NumberRow{0x80004005, 106},  // E_FAIL: MAPI_E_CALL_FAILED
    NumberRow{0x80070005, 131},  // E_ACCESSDENIED: MAPI_E_NO_ACCESS
    NumberRow{0x8007000E, 5},    // E_OUTOFMEMORY: MAPI_E_NOT_ENOUGH_MEMORY
    NumberRow{0x80070057, 125},  // E_INVALIDARG: MAPI_E_INVALID_PARAMETER
    NumberRow{0x80040102, 133},  // MAPI_E_NO_SUPPORT
    NumberRow{0x80040103, 102},  // MAPI_E_BAD_CHARWIDTH
    NumberRow{0x80040105, 148},  // MAPI_E_STRING_TOO_LONG
    NumberRow{0x80040106, 163},  // MAPI_E_UNKNOWN_FLAGS
    NumberRow{0x80040107, 123},  // MAPI_E_INVALID_ENTRYID
    NumberRow{0x80040108, 124},  // MAPI_E_INVALID_OBJECT
    NumberRow{0x80040109, 143},  // MAPI_E_OBJECT_CHANGED
    NumberRow{0x8004010A, 144},  // MAPI_E_OBJECT_DELETED
    NumberRow{0x8004010B, 105},  // MAPI_E_BUSY
    NumberRow{0x8004010D, 136},  // MAPI_E_NOT_ENOUGH_DISK
    NumberRow{0x8004010E, 138},  // MAPI_E_NOT_ENOUGH_RESOURCES
    NumberRow{0x80040111, 3},    // MAPI_E_LOGON_FAILED
    NumberRow{0x80040112, 8},    // MAPI_E_SESSION_LIMIT
    NumberRow{0x80040113, 1},    // MAPI_E_USER_CANCEL
    NumberRow{0x80040114, 156},  // MAPI_E_UNABLE_TO_ABORT
    NumberRow{0x80040115, 23},   // MAPI_E_NETWORK_ERROR
    NumberRow{0x80040116, 113},  // MAPI_E_DISK_ERROR
    NumberRow{0x80040117, 154},  // MAPI_E_TOO_COMPLEX
    NumberRow{0x80040118, 103},  // MAPI_E_BAD_COLUMN
    NumberRow{0x80040119, 115},  // MAPI_E_EXTENDED_ERROR
    NumberRow{0x8004011A, 109},  // MAPI_E_COMPUTED
    NumberRow{0x8004011B, 110},  // MAPI_E_CORRUPT_DATA
    NumberRow{0x8004011C, 158},  // MAPI_E_UNCONFIGURED
    NumberRow{0x8004011D, 116},  // MAPI_E_FAILONEPROVIDER
    NumberRow{0x8004011E, 161},  // MAPI_E_UNKNOWN_CPID
    NumberRow{0x8004011F, 164},  // MAPI_E_UNKNOWN_LCID
    NumberRow{0x80040120, 145},  // MAPI_E_PASSWORD_CHANGE_REQUIRED
    NumberRow{0x80040121, 146},  // MAPI_E_PASSWORD_EXPIRED
    NumberRow{0x80040122, 127},  // MAPI_E_INVALID_WORKSTATION_ACCOUNT
    NumberRow{0x80040123, 121},  // MAPI_E_INVALID_ACCESS_TIME
    NumberRow{0x80040124, 100},  // MAPI_E_ACCOUNT_DISABLED
    NumberRow{0x80040200, 114},  // MAPI_E_END_OF_SESSION
    NumberRow{0x80040201, 162},  // MAPI_E_UNKNOWN_ENTRYID
    NumberRow{0x80040202, 129},  // MAPI_E_MISSING_REQUIRED_COLUMN
    NumberRow{0x80040301, 104},  // MAPI_E_BAD_VALUE
    NumberRow{0x80040302, 126},  // MAPI_E_INVALID_TYPE
    NumberRow{0x80040303, 155},  // MAPI_E_TYPE_NO_SUPPORT
    NumberRow{0x80040304, 160},  // MAPI_E_UNEXPECTED_TYPE
    NumberRow{0x80040305, 153},  // MAPI_E_TOO_BIG
    NumberRow{0x80040306, 112},  // MAPI_E_DECLINE_COPY
    NumberRow{0x80040307, 159},  // MAPI_E_UNEXPECTED_ID
    NumberRow{0x80040400, 157},  // MAPI_E_UNABLE_TO_COMPLETE
    NumberRow{0x80040401, 152},  // MAPI_E_TIMEOUT
    NumberRow{0x80040402, 150},  // MAPI_E_TABLE_EMPTY
    NumberRow{0x80040403, 151},  // MAPI_E_TABLE_TOO_BIG
    NumberRow{0x80040405, 122},  // MAPI_E_INVALID_BOOKMARK
    NumberRow{0x80040501, 107},  // MAPI_E_CANCEL
    NumberRow{0x80040502, 142},  // MAPI_E_NOT_ME
    NumberRow{0x80040600, 111},  // MAPI_E_CORRUPT_STORE
    NumberRow{0x80040601, 140},  // MAPI_E_NOT_IN_QUEUE
    NumberRow{0x80040602, 134},  // MAPI_E_NO_SUPPRESS
    NumberRow{0x80040604, 108},  // MAPI_E_COLLISION
    NumberRow{0x80040605, 141},  // MAPI_E_NOT_INITIALIZED
    NumberRow{0x80040606, 135},  // MAPI_E_NON_STANDARD
    NumberRow{0x80040607, 132},  // MAPI_E_NO_RECIPIENTS
    NumberRow{0x80040608, 149},  // MAPI_E_SUBMITTED
    NumberRow{0x80040609, 118},  // MAPI_E_HAS_FOLDERS
    NumberRow{0x8004060A, 119},  // MAPI_E_HAS_MESSAGES
    NumberRow{0x8004060B, 117},  // MAPI_E_FOLDER_CYCLE
    NumberRow{0x80040700, 101},  // MAPI_E_AMBIGUOUS_RECIP
};

}  // namespace

std::int32_t ActiveMessagingNumber(std::int32_t automationError) {
  const auto* const row = std::find_if(kNumbers.begin(), kNumbers.end(), [&](const auto& known) {
    return static_cast<std::int32_t>(known.published) == automationError;
  });
  if (row != kNumbers.end()) return row->number;
  return automationError == kBackEndSuccess ? active_messaging::kFailure : automationError;
}

}  // namespace quillon
