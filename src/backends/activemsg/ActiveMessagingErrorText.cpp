#include "backends/activemsg/ActiveMessagingErrorText.h"

#include <array>

#include "core/ErrorCode.h"
#include "core/ErrorRow.h"

namespace quillon {

namespace {

constexpr std::array kTexts{
    ErrorRow{-2147221233, "Invalid recipients."},  // MAPI_E_NOT_FOUND, 0x8004010F
    ErrorRow{1, "The user aborted the operation."},
    ErrorRow{2, "General failure."},
    ErrorRow{3, "Login failed"},
    ErrorRow{4, "Disk is full"},
    ErrorRow{5, "Insufficient memory."},
    ErrorRow{8, "Too many mail sessions."},
    ErrorRow{9, "Too many attached files."},
    ErrorRow{10, "Too many recipients."},
    ErrorRow{11, "Attachment not found."},
    ErrorRow{12, "Could not open attached file."},
    ErrorRow{13, "Could not write attached file."},
    ErrorRow{14, "Unknown recipient."},
    ErrorRow{15, "Bad recipient type."},
    ErrorRow{16, "No messages."},
    ErrorRow{17, "Invalid message."},
    ErrorRow{18, "Message too long"},
    ErrorRow{19, "Invalid session."},
    ErrorRow{20, "Message type not supported."},
    ErrorRow{21, "Ambiguous recipient."},
    ErrorRow{22, "Message in use."},
    ErrorRow{23, "Network failure."},
    ErrorRow{24, "Invalid edit fields."},
    ErrorRow{25, "Invalid recipients."},
    ErrorRow{26, "Not supported."},
    ErrorRow{50, "Bad folder name."},
    ErrorRow{100, "Account is disabled."},
    ErrorRow{101, "Ambiguous recipient."},
    ErrorRow{102, "Bad character width."},
    ErrorRow{103, "Bad column."},
    ErrorRow{104, "Bad value."},
    ErrorRow{105, "Busy."},
    ErrorRow{106, "Call failed."},
    ErrorRow{107, "Cancel."},
    ErrorRow{108, "Collision."},
    ErrorRow{109, "Computed."},
    ErrorRow{110, "Corrupt data."},
    ErrorRow{111, "Corrupt store."},
    ErrorRow{112, "Decline copy."},
    ErrorRow{113, "Disk error."},
    ErrorRow{114, "End of session."},
    ErrorRow{115, "Extended error."},
    ErrorRow{116, "A provider failed."},
    ErrorRow{117, "Folder cycle error."},
    ErrorRow{118, "Cannot complete, folders exist."},
    ErrorRow{119, "Cannot complete, messages exist."},
    ErrorRow{120, "Interface is not supported."},
    ErrorRow{121, "Invalid access time."},
    ErrorRow{122, "Invalid bookmark."},
    ErrorRow{123, "Invalid entry ID."},
    ErrorRow{124, "Invalid object."},
    ErrorRow{125, "Invalid parameter."},
    ErrorRow{126, "Invalid type."},
    ErrorRow{127, "Invalid workstation account."},
    ErrorRow{129, "Missing a required column."},
    ErrorRow{131, "No access."},
    ErrorRow{132, "No recipients."},
    ErrorRow{133, "Operation not supported."},
    ErrorRow{134, "No suppress."},
    ErrorRow{135, "Non-standard."},
    ErrorRow{136, "Not enough disk space."},
    ErrorRow{138, "Not enough resources."},
    ErrorRow{139, "Not found."},
    ErrorRow{140, "Not in queue."},
    ErrorRow{141, "Not initialized."},
    ErrorRow{142, "Not me."},
    ErrorRow{143, "Object changed."},
    ErrorRow{144, "Object deleted."},
    ErrorRow{145, "Password change is required."},
    ErrorRow{146, "password is expired."},
    ErrorRow{148, "String is too long."},
    ErrorRow{149, "Submitted."},
    ErrorRow{150, "Table is empty."},
    ErrorRow{151, "Table is too big."},
    ErrorRow{152, "Timeout."},
    ErrorRow{153, "Too big."},
    ErrorRow{154, "Too complex."},
    ErrorRow{155, "Type not supported."},
    ErrorRow{156, "Unable to abort."},
    ErrorRow{157, "Unable to complete."},
    ErrorRow{158, "Unconfigured."},
    ErrorRow{159, "Unexpected ID."},
    ErrorRow{160, "Unexpected type."},
    ErrorRow{161, "Unknown CPID."},
    ErrorRow{162, "Unknown entry ID."},
    ErrorRow{163, "Unknown flags."},
    ErrorRow{164, "Unknown LCID."},
    ErrorRow{170, "Folder does not exist."},
    ErrorRow{171, "Incomplete folder specification."},
    ErrorRow{error_code::kUserAborted, "The user aborted the operation."},
};

}  // namespace

std::string ActiveMessagingErrorText(std::int32_t number) {
  return FindErrorText(kTexts, number);
}

}  // namespace quillon
