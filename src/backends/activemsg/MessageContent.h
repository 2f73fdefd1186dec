// What the properties of a Server put into a message. Every function throws AutomationError, and
// StepFailure where a step has a number of its own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "codec/Attachment.h"
#include "mail/BackEnd.h"
#include "ports/AutomationObject.h"
#include "ports/FileSystem.h"

namespace quillon {

// The library's importance of ours, and back: 1 and 2 are high, 4 and 5 low.
std::int32_t LibraryImportance(std::int16_t importance);
std::int16_t OwnImportance(std::int32_t libraryImportance);

// Subject and text.
void PutText(AutomationObject& message, const MessageBuffers& content);

// Receipt, importance, reports and sensitivity.
void PutOptions(AutomationObject& message, const MailRequest& request);

// Number 25 when one of them is not taken.
void AddRecipients(AutomationObject& message, const MailRequest& request);

// Number 13 when one of them is not taken; `context` says which operation wants it.
void AddAttachments(AutomationObject& message, FileSystem& files,
                    const std::vector<Attachment>& attachments, const char* context);

}  // namespace quillon
