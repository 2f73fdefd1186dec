// The items of the message in the buffers and of a loaded header, by item type.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "mail/SharedState.h"

namespace quillon {

namespace message_item {

inline constexpr std::int32_t kTo = 1;
inline constexpr std::int32_t kCc = 2;
inline constexpr std::int32_t kBcc = 3;
inline constexpr std::int32_t kSubject = 4;
inline constexpr std::int32_t kMessage = 5;
inline constexpr std::int32_t kAttachments = 6;
inline constexpr std::int32_t kAttachmentNames = 7;
inline constexpr std::int32_t kOriginator = 9;
inline constexpr std::int32_t kDateSent = 10;
inline constexpr std::int32_t kRefusedRecipients = 11;
inline constexpr std::int32_t kReplyTo = 12;
inline constexpr std::int32_t kAttachmentTypes = 13;
inline constexpr std::int32_t kAttachmentContentIds = 14;
inline constexpr std::int32_t kHtmlMessage = 15;
inline constexpr std::int32_t kHtmlContentIds = 16;
inline constexpr std::int32_t kAuxiliaryText = 150;

}  // namespace message_item

// The items of a type: as many as the lists hold, one for a text that is not empty, none for one
// that is. An unknown type throws 529.
std::vector<std::string> ItemsOfMessage(const MessageBuffers& message, std::int32_t itemType);
std::vector<std::string> ItemsOfHeader(const HeaderRecord& header, std::int32_t itemType);

// The HTML text: the one to be sent, else the one received.
const std::string& HtmlOf(const MessageBuffers& message) noexcept;

// Empties the items of a type (1 to 6, or 150); another type throws 529.
void ClearItems(MessageBuffers& message, std::int32_t itemType);

// Empties what NewMessage empties.
void ClearMessage(MessageBuffers& message);

}  // namespace quillon
