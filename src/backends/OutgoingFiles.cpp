#include "backends/OutgoingFiles.h"

#include "core/ErrorCode.h"
#include "mail/AttachmentPacking.h"

namespace quillon {

OutgoingFiles::OutgoingFiles(FileSystem& files, const MailRequest& request)
    : folder_(files, request.shared.switches.temporaryDirectory,
              request.shared.switches.keepTemporaryFiles) {
  const auto& instance = request.instance;
  const auto groups =
      GroupAttachments(request.shared.message.attachments, instance.attachmentEncoding);
  for (const auto& group : groups) {
    if (!group.packed) {
      list_.push_back(group.files.front());
      continue;
    }
    const auto archive = folder_.NewFile(kArchiveExtension);
    if (archive.empty() || !PackGroup(files, group, archive, instance.zipPassword)->Run()) {
      throw ServerError(error_code::kZipping);
    }
    list_.push_back({archive, ArchiveName(group)});
  }
}

}  // namespace quillon
