// Which attachments are packed into ZIP archives before they are encoded.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "codec/FileEncoder.h"
#include "mail/SharedState.h"
#include "ports/FileSystem.h"

namespace quillon {

inline constexpr std::string_view kArchiveExtension = ".zip";

// One file that goes as it is, or the files of one archive.
struct AttachmentGroup {
  std::vector<Attachment> files;
  bool packed = false;
};

// In the order of the attachments, as `attachmentEncoding` asks.
std::vector<AttachmentGroup> GroupAttachments(std::vector<Attachment> attachments,
                                              std::int16_t attachmentEncoding);

// The name of the archive of a group: that of its first file, with the extension of archives.
std::string ArchiveName(const AttachmentGroup& group);

// Makes the archive of a group; an empty password means none.
std::unique_ptr<FileEncoder> PackGroup(FileSystem& files, const AttachmentGroup& group,
                                       const std::string& archive, const std::string& password);

}  // namespace quillon
