// Addresses as clients write them, and the bare ones that the envelope takes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillon {

// What stands between the last "<" outside quotes and its ">", or the whole text when there is
// none; trimmed. A quote within a word is no quote.
std::string BareAddress(std::string_view text);

// Whether the text can stand in MAIL FROM: a local part, "@" and a domain, without blanks, brackets
// or controls.
bool IsSenderAddress(std::string_view bareAddress);

// Whether the text can stand in RCPT TO: as a sender's, or a name that the server itself knows, as
// "postmaster" is (RFC 5321, 4.1.1.3). A blank or bracket would add a parameter to the command.
bool IsRecipientAddress(std::string_view bareAddress);

// The envelope of the lists: each entry split at "," (outside quotes, brackets and names) into bare
// addresses. In "Doe, John <john@example.com>" the comma belongs to the name.
std::vector<std::string> FormatSMTPRecipients(const std::vector<std::string>& whoTo,
                                              const std::vector<std::string>& cc,
                                              const std::vector<std::string>& bcc);

// The recipients of the lists one by one, each with its name, as they go into a header.
std::vector<std::string> RecipientsIn(const std::vector<std::string>& entries);

// The value of a To or Cc field: the recipients joined by ", ", a name with a comma quoted, folded
// (RFC 5322, 2.2.3) only where a line would pass the 998 characters that a line may have (2.1.1).
// `used` is what stands before the value on its line.
std::string FormatRecipientText(const std::vector<std::string>& recipients, std::size_t used);

}  // namespace quillon
