#include "backends/mapi/MapiErrorText.h"

#include <array>

#include "core/ErrorCode.h"
#include "core/ErrorRow.h"

namespace quillon {

namespace {

constexpr std::array kTexts{
    ErrorRow{1, "The user aborted the operation."},
    ErrorRow{3, "Login failed"},
    ErrorRow{4, "Disk is full"},
    ErrorRow{5, "Insufficient memory"},
    ErrorRow{8, "Too many mail sessions"},
    ErrorRow{9, "Too many attached files"},
    ErrorRow{10, "Too many recipients"},
    ErrorRow{11, "Attachment not found"},
    ErrorRow{12, "Could not open attached file"},
    ErrorRow{13, "Could not write attached file"},
    ErrorRow{14, "Bad addressee"},
    ErrorRow{21, "Bad addressee"},
    ErrorRow{25, "Bad addressee"},
    ErrorRow{15, "Bad recipient type"},
    ErrorRow{16, "No messages"},
    ErrorRow{17, "Invalid message"},
    ErrorRow{18, "Message too long"},
    ErrorRow{19, "Invalid session"},
    ErrorRow{20, "Message type not supported"},
    ErrorRow{22, "Message in use"},
    ErrorRow{23, "Network failure"},
    ErrorRow{50, "Bad folder name"},
    ErrorRow{error_code::kUserAborted, "The user aborted the operation."},
    ErrorRow{-2147221233, "Bad addressee"},  // MAPI_E_NOT_FOUND, 0x8004010F
};

}  // namespace

std::string MapiErrorText(std::int32_t number) {
  return FindErrorText(kTexts, number);
}

}  // namespace quillon
