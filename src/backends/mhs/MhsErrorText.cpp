#include "backends/mhs/MhsErrorText.h"

#include <array>

#include "core/ErrorRow.h"

namespace quillon {

namespace {

constexpr std::array kTexts{
    ErrorRow{mhs::kCannotCreate, "Could not create a file in the mail directory"},
    ErrorRow{mhs::kCannotWrite, "Could not write message.  Is disk full?"},
    ErrorRow{mhs::kNoAttachment, "Attachment not found"},
    ErrorRow{mhs::kAttachmentNotSaved, "Could not write attached file"},
    ErrorRow{mhs::kMessageGone, "Message not found"},
    ErrorRow{mhs::kCannotRead, "Could not read message"},
    ErrorRow{mhs::kCannotDelete, "Could not delete message"},
    ErrorRow{mhs::kParcelNotDeleted, "Could not delete the attachments of the message"},
    ErrorRow{mhs::kBadAddress, "Bad addressee"},
    ErrorRow{mhs::kTooLong, "Message too long"},
    ErrorRow{mhs::kNotMarked, "Could not mark message as read"},
    ErrorRow{mhs::kUnknownUser, "Unknown user"},
    ErrorRow{mhs::kBookNotRead, "Could not read address book"},
};

}  // namespace

std::string MhsErrorText(std::int32_t number) {
  return FindErrorText(kTexts, number);
}

}  // namespace quillon
