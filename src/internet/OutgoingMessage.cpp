#include "internet/OutgoingMessage.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>
#include <utility>

#include "core/Text.h"
#include "internet/Address.h"
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

// Two blanks after the name of the field, and a two-digit year.
std::string DateLine(const LocalTime& now, int offset) {
  std::array<char, 64> line{};
  const int size = std::snprintf(
      line.data(), line.size(), "Date:  %s, %02d %s %02d %02d:%02d:%02d %c%02d%02d\r\n",
      kDays[static_cast<unsigned>(now.weekday) % 7], now.day,
      kMonths[static_cast<unsigned>(now.month - 1) % 12], now.year % 100, now.hour, now.minute,
      now.second, offset < 0 ? '-' : '+', std::abs(offset) / 60, std::abs(offset) % 60);
  return {line.data(), static_cast<std::size_t>(size)};
}

class HeaderBlock {
 public:
  void Field(std::string_view name, std::string_view value) {
    text_.append(name).append(HeaderText(value)).append("\r\n");
  }
  void Recipients(std::string_view name, const std::vector<std::string>& recipients) {
    text_.append(name).append(FormatRecipientText(recipients, name.size())).append("\r\n");
  }
  void Lines(std::string_view lines) { text_.append(lines); }
  std::string Take() { return std::move(text_.append("\r\n")); }

 private:
  std::string text_;
};

void DescribeContent(HeaderBlock& block, const OutgoingMessage& message,
                     std::string_view boundary) {
  switch (ShapeOf(message)) {
    case MessageShape::Text:
      return block.Field("Content-Type: ", TextType(message.charset));
    case MessageShape::UuBlocks:
      return block.Field("Content-Transfer-Encoding: ", "7bit");
    case MessageShape::Alternatives:
      return block.Field("Content-Type: ", MultipartType("alternative", boundary));
    case MessageShape::Mixed:
      return block.Field("Content-Type: ", MultipartType("mixed", boundary));
  }
}

}  // namespace

MessageShape ShapeOf(const OutgoingMessage& message) {
  const bool alternatives = !message.alternatives.empty();
  if (message.attachments.empty()) {
    return alternatives ? MessageShape::Alternatives : MessageShape::Text;
  }
  const bool mime = (message.attachmentEncoding & attachment_encoding::kMime) != 0;
  return alternatives || mime ? MessageShape::Mixed : MessageShape::UuBlocks;
}

std::string BuildHeaderBlock(const OutgoingMessage& message, const LocalTime& now,
                             std::string_view boundary) {
  const auto sender = BareAddress(message.from);
  const auto& replyTo = message.replyTo;
  HeaderBlock block;
  block.Lines(DateLine(now, OffsetMinutes(message, now)));
  block.Field("From: ", message.from);
  block.Recipients("To: ", message.whoTo);
  if (!message.cc.empty()) block.Recipients("Cc: ", message.cc);
  block.Field("Subject: ", message.subject);
  block.Lines("MIME-version: 1.0\r\n");
  DescribeContent(block, message, boundary);
  if (message.certify) {
    block.Field("Return-Receipt-To: ", replyTo.empty() ? sender : replyTo);
    block.Field("Disposition-Notification-To: ", replyTo.empty() ? sender : replyTo);
  }
  block.Field("Reply-To: ", replyTo.empty() ? "<" + sender + ">" : replyTo);
  const bool hasLines = message.importance >= 1 && message.importance <= 5;
  block.Lines(kPriorityLines[hasLines ? static_cast<std::size_t>(message.importance) : 0]);
  for (const auto& header : message.xHeaders) {
    block.Field("X-" + HeaderText(Trim(header.name)) + ": ", header.value);
  }
  block.Field("X-Interface: Quillon OLE Server v", message.version + " (32)");
  if (!message.xMailer.empty()) block.Field("X-Mailer: ", message.xMailer);
  if (!message.specialBuild.empty()) block.Field("X-SpecialBuild: ", message.specialBuild);
  return block.Take();
}

}  // namespace quillon
