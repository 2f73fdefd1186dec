#include "backends/vim/VimErrorText.h"

#include <array>

#include "core/ErrorCode.h"
#include "core/ErrorRow.h"

namespace quillon {

namespace {

constexpr std::array kTexts{
    ErrorRow{3, "Missing login parameters"},
    ErrorRow{4, "Attachment not found"},
    ErrorRow{5, "Bad parameter"},
    ErrorRow{6, "Buffer is too small"},
    ErrorRow{7, "Conversion not supported"},
    ErrorRow{8, "Insufficient memory"},
    ErrorRow{9, "Invalid VIM configuration"},
    ErrorRow{10, "Invalid object"},
    ErrorRow{11, "Login failed"},
    ErrorRow{12, "Invalid selector"},
    ErrorRow{13, "Invalid signature"},
    ErrorRow{15, "Name not found"},
    ErrorRow{16, "VIM operation not supported"},
    ErrorRow{17, "No common certificates"},
    ErrorRow{18, "No default"},
    ErrorRow{19, "No match"},
    ErrorRow{20, "No signature"},
    ErrorRow{21, "No such attribute"},
    ErrorRow{22, "Open failure"},
    ErrorRow{23, "Password required"},
    ErrorRow{24, "Read failure"},
    ErrorRow{25, "Unsupported message type"},
    ErrorRow{26, "Unsupported VIM version"},
    ErrorRow{27, "VIM write failure"},
    ErrorRow{256, "No recipients"},
    ErrorRow{257, "Recipient not found"},
    ErrorRow{258, "Recipient not unique"},
    ErrorRow{259, "Message container is corrupted"},
    ErrorRow{260, "Invalid message"},
    ErrorRow{261, "User cancelled"},
    ErrorRow{500, "Not supported in 32-bit version of Quillon"},
    ErrorRow{error_code::kUserAborted, "The user aborted the operation."},
};

}  // namespace

std::string VimErrorText(std::int32_t number) {
  return FindErrorText(kTexts, number);
}

}  // namespace quillon
