#include "internet/InternetErrorText.h"

#include <array>
#include <span>

#include "core/ErrorCode.h"
#include "core/ErrorRow.h"
#include "internet/InternetError.h"

namespace quillon {

namespace {

constexpr std::string_view kSmtpCommandError =
    "SMTP command error.  Is this really an SMTP server?";
constexpr std::string_view kSmtpServerError = "SMTP server error .";
constexpr std::string_view kAborted = "The user aborted the operation.";

// Of both protocols.
constexpr std::array kSecurityTexts = {
    ErrorRow{internet_error::kCertificateRefused, "The server's certificate was refused."},
    ErrorRow{internet_error::kNoEncryption, "The server offers no encryption."},
    ErrorRow{internet_error::kSecuringFailed, "The secure connection could not be made."},
    ErrorRow{internet_error::kLoginRefused, "The server refused the login."},
    ErrorRow{internet_error::kNoCommonLogin, "There is no common login method."},
    ErrorRow{internet_error::kNoAccessToken, "The access token could not be had."},
};

constexpr std::array kSmtpTexts = {
    ErrorRow{1, "Could not connect to SMTP server."},
    ErrorRow{3, "An invalid response was received from the SMTP server."},
    ErrorRow{5, "An unknown SMTP error occurred."},
    ErrorRow{7, "The server port is not a SMTP server."},
    ErrorRow{9, "No recipients were specified."},
    ErrorRow{10, "A bad recipient prevented the message from being sent."},
    ErrorRow{11, "Unknown error occurred while sending message text."},
    ErrorRow{12, "Unknown error occurred while sending file attachments."},
    ErrorRow{13, "Error occurred while sending message terminator."},
    ErrorRow{20, "One or more bad recipients, but message was sent to good recipients."},
    ErrorRow{27, "Network communications timed out."},
    ErrorRow{28, "Network communications timed out."},
    ErrorRow{29, "Unknown network error on send."},
    ErrorRow{46, "The server takes no addresses with other characters than ASCII before the @."},
    ErrorRow{421, "SMTP service unavailable."},
    ErrorRow{450, "SMTP mailbox busy."},
    ErrorRow{451, kSmtpServerError},
    ErrorRow{452, "SMTP server disk full."},
    ErrorRow{500, kSmtpCommandError},
    ErrorRow{501, kSmtpCommandError},
    ErrorRow{502, kSmtpCommandError},
    ErrorRow{503, kSmtpCommandError},
    ErrorRow{504, kSmtpCommandError},
    ErrorRow{error_code::kUserAborted, kAborted},
    ErrorRow{550, "SMTP mailbox doesn't exist."},
    ErrorRow{552, "Exceeded SMTP storage allocation."},
    ErrorRow{553, "SMTP mailbox syntax error."},
    ErrorRow{554, kSmtpServerError},
    ErrorRow{555, "SMTP invalid sender address (From property)."},
    ErrorRow{556, "Recipient not local, mail refused by SMTP server."},
};

constexpr std::array kPopTexts = {
    ErrorRow{2, "Could not connect to POP server."},
    ErrorRow{4, "An invalid response was received from the POP server."},
    ErrorRow{6, "An unknown POP error occurred."},
    ErrorRow{16, "The maildrop is busy (another client logged in?)."},
    ErrorRow{17, "The POP message deletion failed."},
    ErrorRow{18, "The POP LIST command failed."},
    ErrorRow{19, "The POP NOOP command failed."},
    ErrorRow{20, "The POP QUIT command failed."},
    ErrorRow{21, "The POP RETRIEVE command failed."},
    ErrorRow{22, "The POP RESET command failed."},
    ErrorRow{23, "The POP STAT command failed."},
    ErrorRow{24, "The POP TOP command failed."},
    ErrorRow{25, "The POP UIDL command failed."},
    ErrorRow{26, "Error occurred trying to open the POP temporary file."},
    ErrorRow{27, "Communications with the POP server timed out."},
    ErrorRow{28, "Communications with the POP server timed out."},
    ErrorRow{29, "Unknown network error."},
    ErrorRow{30, "Data overflow occurred during POP transaction."},
    ErrorRow{error_code::kUserAborted, kAborted},
};

std::string TextOfEither(std::span<const ErrorRow> protocol, std::int32_t number) {
  auto text = FindErrorText(kSecurityTexts, number);
  return text.empty() ? FindErrorText(protocol, number) : text;
}

}  // namespace

bool IsSecurityError(std::int32_t number) {
  return !FindErrorText(kSecurityTexts, number).empty();
}

std::string SmtpErrorText(std::int32_t number) {
  return TextOfEither(kSmtpTexts, number);
}

std::string PopErrorText(std::int32_t number, const std::string& serverWords) {
  switch (number) {
    case 8:
      return "The server port is not a POP server.  Server response: " + serverWords;
    case 14:
    case 15:
      return serverWords;
    default:
      return TextOfEither(kPopTexts, number);
  }
}

}  // namespace quillon
