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

constexpr std::int32_t kInterfaceErrorLimit = 100000;

}  // namespace

std::string ErrorText(std::int32_t code) {
  return FindErrorText(kTexts, code);
}

std::int32_t ErrorBase(MailSystemId system, std::int32_t& interfaceError) {
  if (interfaceError < -kInterfaceErrorLimit || interfaceError > kInterfaceErrorLimit) {
    interfaceError = 0;
  }
  const auto& row = RowOf(system);
  const bool isOther = row.otherBase.Holds(interfaceError);
  return interfaceError + (isOther ? row.otherBase.shift : row.errorBase);
}

CodeOrigin OriginOfCode(std::int64_t code) {
  for (const auto& row : MailSystemRows()) {
    for (const auto& range : row.decoded) {
      if (range.Holds(code)) return {row.id, static_cast<std::int32_t>(code - range.shift)};
    }
  }
  return {mail_system::kNone, static_cast<std::int32_t>(code)};
}

}  // namespace quillon
