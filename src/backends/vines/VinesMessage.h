// Messages of a provider library as records of the server, and the other way round.
#pragma once

#include <string>

#include "backends/OutgoingFiles.h"
#include "codec/HeaderTable.h"
#include "mail/BackEnd.h"
#include "mail/ReceivedFiles.h"
#include "ports/FileSystem.h"
#include "ports/MailProvider.h"

namespace quillon {

// What a call of the library has of the request.
ProviderCall VinesCallOf(const MailRequest& request);

// Whose headers they are: the ones of a user are good in each of his sessions.
std::string VinesMailboxOf(const InstanceState& instance);

// The identifier of the message at messageIndex; ServerError 533 when there is none, 532 when it
// is one of another mail system or user.
std::string CurrentVinesMessage(const MailRequest& request);

HeaderRecord VinesHeaderOf(ProviderHeader header, const std::string& dateFormat);

// The message that is being composed, with these files.
ProviderMessage VinesMessageOf(const MailRequest& request, FileSystem& files,
                               const OutgoingFiles& attachments);

// Makes what has been read the current message.
void TakeVinesMessage(MailRequest& request, ProviderMessage message, ReceivedFiles& files);

}  // namespace quillon
