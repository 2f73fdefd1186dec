// Attachments packed into ZIP archives before they are encoded.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "internet/TemporaryFolder.h"
#include "mail/SharedState.h"
#include "platform/FileSystem.h"

namespace quillon {

// The files to attach in place of the given ones: themselves, or the archives that
// `attachmentEncoding` asks for, made in `folder`. An archive is named after the first file in it;
// an empty password means none. Throws ServerError 534 when one cannot be made.
std::vector<Attachment> PackAttachments(FileSystem& files, TemporaryFolder& folder,
                                        std::vector<Attachment> attachments,
                                        std::int16_t attachmentEncoding,
                                        const std::string& password);

}  // namespace quillon
