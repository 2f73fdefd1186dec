#include "server/ErrorTable.h"

#include <array>

#include "core/ErrorRow.h"

namespace quillon {

namespace {

constexpr std::array kTexts{
    ErrorRow{error_code::kNoMailSystem, "No mail system was detected."},
    ErrorRow{error_code::kNoAddressees, "No addressees were specified."},
    ErrorRow{error_code::kTooManyBcc, "Too many Bcc recipients."},
    ErrorRow{error_code::kTooManyCc, "Too many Cc recipients."},
    ErrorRow{error_code::kTooManyTo, "Too many To recipients."},
    ErrorRow{error_code::kTooManyAttachments, "Too many attachments."},
    ErrorRow{error_code::kNoAttachment, "Attachment does not exist."},
    ErrorRow{error_code::kUserAborted, "The user aborted the operation."},
    ErrorRow{error_code::kInvalidValue, "Invalid property value."},
    ErrorRow{error_code::kNotSupported, "Operation not supported by this mail system."},
    ErrorRow{error_code::kNoHeaders, "No valid message headers have been loaded."},
    ErrorRow{error_code::kBadMessageIndex, "Message index is not valid."},
    ErrorRow{error_code::kZipping, "Error while zipping files.  Is disk full?"},
    ErrorRow{error_code::kEncoding, "Error while encoding files.  Is disk full?"},
    ErrorRow{error_code::kNotRegistered,
             "No asynchronous notification object has been registered."},
    ErrorRow{error_code::kInProgress,
             "You cannot execute an asynchronous method while another is in progress."},
    ErrorRow{error_code::kInNotification,
             "You cannot execute an asynchronous method until after the "
             "AsynchNotification method exits back to Quillon."},
    ErrorRow{error_code::kRegistration, "Unable to register asynchronous notification object."},
    ErrorRow{error_code::kLoginData, "Insufficient login information."},
    ErrorRow{error_code::kReservedHeader, "Reserved header."},
    ErrorRow{error_code::kNoPostOffice, "Post office directory does not exist."},
    ErrorRow{error_code::kFileNotSpecified, "File not specified."},
    ErrorRow{error_code::kNoFile, "File does not exist."},
    ErrorRow{error_code::kDataMissing, "Data needed for this operation was not provided."},
    ErrorRow{error_code::kNoMailObject,
             "The Address Book MailObject property is not set or is nothing."},
    ErrorRow{error_code::kAddressBookClosed, "The Address Book is not open."},
    ErrorRow{error_code::kAddressBookNoSystem, "No mail system was detected."},
    ErrorRow{error_code::kNoAddressBook, "No Address Book support for this mail system."},
    ErrorRow{error_code::kAddressBookFunction,
             "Address Book function not supported for this mail system."},
};

struct DecodeRange {
  std::int32_t first;
  std::int32_t last;
  MailSystemId system;
  std::int32_t reduction;
};

constexpr std::array kDecodeRanges{
    DecodeRange{0, 599, 0, 0},
    DecodeRange{750, 759, 0, 0},
    DecodeRange{2000, 2999, mail_system::kSimpleMapi, 2000},
    DecodeRange{3000, 3999, mail_system::kVines, 0},
    DecodeRange{4000, 4999, mail_system::kVim, 4000},
    DecodeRange{5000, 5999, mail_system::kMhs, 5000},
    DecodeRange{6000, 6999, mail_system::kInternet, 6000},
    DecodeRange{7000, 7999, 12, 7000},
    DecodeRange{8000, 8999, mail_system::kActiveMessaging, 8000},
    DecodeRange{9000, 9999, mail_system::kNotes, 9000},
    DecodeRange{0x40200, 0x40200, mail_system::kActiveMessaging, 8000},
};

constexpr std::int32_t kInterfaceErrorLimit = 100000;

std::int32_t BaseOf(MailSystemId system, std::int32_t interfaceError) {
  switch (system) {
    case 1:
    case 5:
    case 8:
      return 2000;
    case 2:
      return 4000;
    case 3:
    case 4:
      return 5000;
    case 6:
    case 7:
    case 10:
      return 6000;
    case 9:
      return 8000;
    case 11:
      return interfaceError >= 4000 && interfaceError < 7000 ? 5000 : 2000;
    case 30:
      return 10000;
    case 40:
      return 11000;
    default:
      return 0;
  }
}

}  // namespace

std::string ErrorText(std::int32_t code) {
  return FindErrorText(kTexts, code);
}

std::int32_t ErrorBase(MailSystemId system, std::int32_t& interfaceError) {
  if (interfaceError < -kInterfaceErrorLimit || interfaceError > kInterfaceErrorLimit) {
    interfaceError = 0;
  }
  return interfaceError + BaseOf(system, interfaceError);
}

CodeOrigin OriginOfCode(std::int64_t code) {
  for (const auto& range : kDecodeRanges) {
    if (code >= range.first && code <= range.last) {
      return {range.system, static_cast<std::int32_t>(code - range.reduction)};
    }
  }
  return {mail_system::kNone, static_cast<std::int32_t>(code)};
}

}  // namespace quillon
