// The records that LoadMessageHeaders fills, one per message, in the order of messageIndex (from
// 0).
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "core/ShortBool.h"

namespace quillon {

// What some mail systems know besides of a message.
struct MessageDetails {
  std::string type;  // as "IPM.Note"
  std::string conversationTopic;
  std::string conversationIndex;  // as the property ConversationIndex takes it
  ShortBool deliveryReport = kFalse;
  std::int32_t attachments = 0;
  std::int32_t recipients = 0;
};

// All texts. While a back end reads headers they hold the bytes of the wire; what stands in
// SharedState::headers is UTF-8 text.
struct HeaderRecord {
  std::string
      number;  // what the back end needs to find the message again (POP3: its message number)
  std::string uniqueId;  // the server's unique identifier (UIDL)
  std::string dateText;  // formatted by dateFormat
  std::string subject;
  std::string originator;
  std::string to;
  std::string cc;
  std::string status;  // as the "Status" field says; kStatusRead, kStatusUnread
  std::string messageId;
  std::string replyAddress;
  std::string contentLength;  // as the "Content-Length" field says
  std::string size;           // bytes, where the back end knows them
  std::string transferEncoding;
  std::string contentType;
  std::string mailer;
  ShortBool receiptRequested = kFalse;
  std::int16_t priority = 3;  // 1 (highest) to 5
  // By which the back end knows the message again where it has no unique identifier; 0: not at all.
  std::uint64_t identity = 0;
  std::shared_ptr<const MessageDetails> details;  // null when the mail system does not know them
};

// What back ends put into the status that know it as a flag.
inline constexpr const char* kStatusRead = "R";
inline constexpr const char* kStatusUnread = "U";

// The members that come from the mail.
inline constexpr std::array kHeaderTexts = {
    &HeaderRecord::uniqueId,      &HeaderRecord::dateText,  &HeaderRecord::subject,
    &HeaderRecord::originator,    &HeaderRecord::to,        &HeaderRecord::cc,
    &HeaderRecord::status,        &HeaderRecord::messageId, &HeaderRecord::replyAddress,
    &HeaderRecord::contentLength, &HeaderRecord::size,      &HeaderRecord::transferEncoding,
    &HeaderRecord::contentType,   &HeaderRecord::mailer};

// Grows without moving what it holds, which would take twice the memory for a while.
using HeaderTable = std::deque<HeaderRecord>;

}  // namespace quillon
