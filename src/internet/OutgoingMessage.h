// The message that the SMTP session transmits, and its header block. All texts are bytes as they go
// out, but for the paths and names of files and the password of archives, which are UTF-8. With an
// encoder all are UTF-8, but for the text once it is prepared.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "codec/TextEncoder.h"
#include "mail/SharedState.h"
#include "ports/LocalClock.h"

namespace quillon {

struct OutgoingMessage {
  std::string from;  // with or without a display name
  std::vector<std::string> whoTo;
  std::vector<std::string> cc;
  std::vector<std::string> bcc;
  std::string subject;
  std::string body;
  std::string replyTo;
  std::string charset;
  std::string xMailer;
  std::vector<XHeader> xHeaders;
  std::int16_t importance = 3;
  std::int16_t deliveryReport = 0;
  bool certify = false;
  float utcOffset = 0;       // hours, or kUtcOffsetNotSet: that of the clock
  std::string version;       // of the program
  std::string specialBuild;  // may be empty

  std::string html;                        // UTF-8 until it is prepared; empty: there is none
  std::optional<TextEncoder> htmlEncoder;  // with it
  std::vector<Attachment> inlineFiles;     // that it shows

  std::vector<Alternative> alternatives;
  std::vector<Attachment> attachments;
  std::int16_t attachmentEncoding = attachment_encoding::kMime;
  std::string zipPassword;

  std::optional<TextEncoder> encoder;  // the character set that texts leave in
  bool modern = false;                 // the header as RFC 5322 has it
  std::string uniqueId;                // modern: what no other message has, for its Message-ID
  std::vector<XHeader> headers;        // with their whole names
  std::string_view transferEncoding;   // of the text; empty: nothing is said of it
  std::string_view htmlTransferEncoding;
  std::string htmlCharset;

  bool HasAlternatives() const noexcept { return !alternatives.empty() || !html.empty(); }

  // Whether more is said of the content than the contract's header has.
  bool IsDescribed() const noexcept { return modern || encoder.has_value(); }
};

enum class MessageShape {
  Text,          // the text alone
  UuBlocks,      // uuencoded attachments behind the text
  Alternatives,  // multipart/alternative: the text and its alternatives
  Mixed,         // multipart/mixed: the text, or all its forms in a part, and the attachments
};

// Alternatives cannot do without MIME, whatever the encoding of attachments.
MessageShape ShapeOf(const OutgoingMessage& message);

// The text as it goes out, with its label and its transfer encoding, where the message is in a
// character set or in the modern form; HTML always. ServerError 529: EncodedField.h.
void PrepareText(OutgoingMessage& message);

// The header fields in their fixed order, each with its CR LF, and the empty line after them. The
// boundary is that of the outermost parts; a message without parts has none. ServerError 529:
// EncodedField.h.
std::string BuildHeaderBlock(const OutgoingMessage& message, const LocalTime& now,
                             std::string_view boundary = {});

}  // namespace quillon
