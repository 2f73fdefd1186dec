#include "internet/AttachmentPacking.h"

#include <utility>

#include "core/ServerError.h"
#include "internet/OutgoingMessage.h"

namespace quillon {

std::vector<Attachment> PackAttachments(FileSystem&, TemporaryFolder&,
                                        std::vector<Attachment> attachments,
                                        std::int16_t attachmentEncoding, const std::string&) {
  using attachment_encoding::kArchiveEach;
  using attachment_encoding::kOneArchive;
  if ((attachmentEncoding & (kOneArchive | kArchiveEach)) == 0) return attachments;
  throw ServerError(530, "Internet mail cannot pack attachments yet.");
}

}  // namespace quillon
