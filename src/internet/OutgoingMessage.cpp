#include "internet/OutgoingMessage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>
#include <utility>

#include "codec/BodyEncoding.h"
#include "codec/FieldFold.h"
#include "core/Text.h"
#include "internet/Address.h"
#include "internet/EncodedField.h"
#include "internet/PartFields.h"
#include "mail/InstanceState.h"
#include "net/WireText.h"

namespace quillon {

namespace {

constexpr std::array kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// The lines that an importance of 1 to 5 writes.
constexpr std::array<std::string_view, 6> kPriorityLines = {
    "X-MSMail-Priority: Normal\r\n",
    "X-Priority: 1\r\nX-MSMail-Priority: High\r\n",
    "X-Priority: 2\r\nX-MSMail-Priority: High\r\n",
    "X-MSMail-Priority: Normal\r\n",
    "X-Priority: 4\r\nX-MSMail-Priority: Low\r\n",
    "X-Priority: 5\r\nX-MSMail-Priority: Low\r\n"};

int OffsetMinutes(const OutgoingMessage& message, const LocalTime& now) {
  if (message.utcOffset == kUtcOffsetNotSet) return now.utcOffset;
  return static_cast<int>(std::lround(message.utcOffset * 60.0F));
}

// Two blanks after the name of the field, and a two-digit year; not so in the modern form.
std::string DateLine(const LocalTime& now, int offset, bool modern) {
  std::array<char, 64> line{};
  const int size = std::snprintf(
      line.data(), line.size(), "Date: %s%s, %02d %s %02d %02d:%02d:%02d %c%02d%02d\r\n",
      modern ? "" : " ", kDays[static_cast<unsigned>(now.weekday) % 7], now.day,
      kMonths[static_cast<unsigned>(now.month - 1) % 12], modern ? now.year : now.year % 100,
      now.hour, now.minute, now.second, offset < 0 ? '-' : '+', std::abs(offset) / 60,
      std::abs(offset) % 60);
  return {line.data(), static_cast<std::size_t>(size)};
}

class HeaderBlock {
 public:
  explicit HeaderBlock(const OutgoingMessage& message)
      : encoder_(message.encoder ? &*message.encoder : nullptr), folds_(message.IsDescribed()) {}

  // What holds nothing but ASCII.
  void Field(std::string_view name, std::string_view value) { Add(name, HeaderText(value)); }
  void Text(std::string_view name, std::string_view value, std::string_view what) {
    Add(name,
        encoder_ != nullptr ? EncodedText(value, *encoder_, what, name.size()) : HeaderText(value));
  }
  // Whoever has written the value has separated it as he wants it.
  void Address(std::string_view name, const std::string& value, std::string_view what) {
    Add(name, encoder_ != nullptr ? Encoded({value}, what) : HeaderText(value));
  }
  void Recipients(std::string_view name, const std::vector<std::string>& recipients,
                  std::string_view what) {
    if (encoder_ != nullptr) return Add(name, Encoded(recipients, what));
    if (folds_) return Add(name, HeaderText(Join(RecipientsIn(recipients), ", ")));
    Add(name, FormatRecipientText(recipients, name.size()));
  }
  void Lines(std::string_view lines) { text_.append(lines); }
  std::string Take() { return std::move(text_.append("\r\n")); }

 private:
  void Add(std::string_view name, std::string_view value) {
    const auto field = std::string(name).append(value);
    text_.append(folds_ ? FoldField(field) : field + "\r\n");
  }
  std::string Encoded(const std::vector<std::string>& entries, std::string_view what) const {
    auto recipients = RecipientsIn(entries);
    for (auto& recipient : recipients) recipient = EncodedAddress(recipient, *encoder_, what);
    return Join(recipients, ", ");
  }

  const TextEncoder* encoder_;
  bool folds_;
  std::string text_;
};

void DescribeContent(HeaderBlock& block, const OutgoingMessage& message,
                     std::string_view boundary) {
  switch (ShapeOf(message)) {
    case MessageShape::Text:
      block.Field("Content-Type: ", TextType(message.charset));
      if (!message.transferEncoding.empty()) {
        block.Field("Content-Transfer-Encoding: ", message.transferEncoding);
      }
      return;
    case MessageShape::UuBlocks:
      return block.Field("Content-Transfer-Encoding: ", "7bit");
    case MessageShape::Alternatives:
      return block.Field("Content-Type: ", MultipartType("alternative", boundary, message.modern));
    case MessageShape::Mixed:
      return block.Field("Content-Type: ", MultipartType("mixed", boundary, message.modern));
  }
}

// A header of the modern form says to whom a message goes; to nobody that it tells of, if so.
void AddRecipientFields(HeaderBlock& block, const OutgoingMessage& message) {
  const auto names = [](const std::vector<std::string>& entries) {
    return !RecipientsIn(entries).empty();
  };
  if (!message.modern || names(message.whoTo)) {
    block.Recipients("To: ", message.whoTo, "A recipient");
  } else if (!names(message.cc)) {
    block.Field("To: ", "undisclosed-recipients:;");
  }
  if (message.modern ? names(message.cc) : !message.cc.empty()) {
    block.Recipients("Cc: ", message.cc, "A recipient");
  }
}

// Of the sender's domain, which the header tells anyway: nothing of the machine or its user.
void AddMessageId(HeaderBlock& block, const OutgoingMessage& message, std::string_view sender) {
  const bool has = std::any_of(message.headers.begin(), message.headers.end(), [](const auto& one) {
    return EqualsIgnoreCase(one.name, "Message-ID");
  });
  if (!message.modern || has) return;
  const auto address = WithAsciiDomain(sender);
  block.Field("Message-ID: ",
              "<" + message.uniqueId + "@" + address.substr(address.rfind('@') + 1) + ">");
}

void AddOwnFields(HeaderBlock& block, const OutgoingMessage& message) {
  for (const auto& header : message.xHeaders) {
    const auto name = "X-" + HeaderText(Trim(header.name));
    block.Text(name + ": ", header.value, name);
  }
  for (const auto& header : message.headers) {
    block.Text(HeaderText(header.name) + ": ", header.value, header.name);
  }
}

}  // namespace

void PrepareText(OutgoingMessage& message) {
  if (!message.html.empty()) {
    message.htmlCharset = message.htmlEncoder->Label(message.html);
    auto html = EncodeBody(EncodedBytes(message.html, *message.htmlEncoder, "HTMLMessage"));
    message.html = std::move(html.text);
    message.htmlTransferEncoding = html.encoding;
  }
  if (message.encoder) {
    message.charset = message.encoder->Label(message.body);
    message.body = EncodedBytes(message.body, *message.encoder, "Message");
  }
  if (!message.IsDescribed()) return;
  auto encoded = EncodeBody(std::move(message.body));
  message.body = std::move(encoded.text);
  message.transferEncoding = encoded.encoding;
}

MessageShape ShapeOf(const OutgoingMessage& message) {
  const bool alternatives = message.HasAlternatives();
  if (message.attachments.empty()) {
    return alternatives ? MessageShape::Alternatives : MessageShape::Text;
  }
  // Uuencoded files stand in the text, which could not be encoded then.
  const bool mime =
      message.IsDescribed() || (message.attachmentEncoding & attachment_encoding::kMime) != 0;
  return alternatives || mime ? MessageShape::Mixed : MessageShape::UuBlocks;
}

std::string BuildHeaderBlock(const OutgoingMessage& message, const LocalTime& now,
                             std::string_view boundary) {
  const auto sender = BareAddress(message.from);
  const auto& replyTo = message.replyTo;
  HeaderBlock block(message);
  block.Lines(DateLine(now, OffsetMinutes(message, now), message.modern));
  AddMessageId(block, message, sender);
  block.Address("From: ", message.from, "from");
  AddRecipientFields(block, message);
  block.Text("Subject: ", message.subject, "subject");
  block.Lines(message.modern ? "MIME-Version: 1.0\r\n" : "MIME-version: 1.0\r\n");
  DescribeContent(block, message, boundary);
  if (message.certify) {
    block.Address("Return-Receipt-To: ", replyTo.empty() ? sender : replyTo, "replyTo");
    block.Address("Disposition-Notification-To: ", replyTo.empty() ? sender : replyTo, "replyTo");
  }
  block.Address("Reply-To: ", replyTo.empty() ? "<" + sender + ">" : replyTo, "replyTo");
  const bool hasLines = message.importance >= 1 && message.importance <= 5;
  block.Lines(kPriorityLines[hasLines ? static_cast<std::size_t>(message.importance) : 0]);
  AddOwnFields(block, message);
  if (!message.modern) {
    block.Field("X-Interface: Quillon OLE Server v", message.version + " (32)");
  }
  if (!message.xMailer.empty()) block.Text("X-Mailer: ", message.xMailer, "XMailer");
  if (!message.specialBuild.empty()) block.Field("X-SpecialBuild: ", message.specialBuild);
  return block.Take();
}

}  // namespace quillon
