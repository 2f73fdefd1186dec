// Messages of Simple MAPI as records of the server.
#pragma once

#include <cstdint>
#include <string>

#include "codec/HeaderTable.h"
#include "mail/BackEnd.h"
#include "ports/FileSystem.h"
#include "ports/SimpleMapi.h"

namespace quillon {

inline constexpr std::uint32_t kAttachmentNotWritten = 13;  // MAPI_E_ATTACHMENT_WRITE_FAILURE

// Whose headers they are: the ones of a profile are good in each of its sessions.
std::string MapiMailboxOf(const InstanceState& instance);

// The identifier of the message at messageIndex; ServerError 533 when there is none, 532 when it
// is one of another mail system or profile.
std::string CurrentMapiMessage(const MailRequest& request);

// All that an envelope says.
HeaderRecord HeaderOf(const MapiMessage& envelope, const InstanceState& instance);

// Makes the message the current one, with its files in the directory for attachments. The
// library's own files are gone afterwards in any case. False when one cannot be copied: then
// nothing is left, and the current message is the one before.
bool TakeMapiMessage(FileSystem& files, MailRequest& request, const MapiMessage& message);

}  // namespace quillon
