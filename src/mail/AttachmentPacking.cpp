#include "mail/AttachmentPacking.h"

#include <utility>

#include "codec/ZipClass.h"

namespace quillon {

std::vector<AttachmentGroup> GroupAttachments(std::vector<Attachment> attachments,
                                              std::int16_t attachmentEncoding) {
  std::vector<AttachmentGroup> groups;
  if (attachments.empty()) return groups;
  if ((attachmentEncoding & attachment_encoding::kOneArchive) != 0) {
    groups.push_back({std::move(attachments), true});
    return groups;
  }
  const bool packed = (attachmentEncoding & attachment_encoding::kArchiveEach) != 0;
  for (auto& attachment : attachments) groups.push_back({{std::move(attachment)}, packed});
  return groups;
}

// "report.tar.gz" becomes "report.tar.zip"; a dot at the begin of a name starts no extension.
std::string ArchiveName(const AttachmentGroup& group) {
  std::string_view name = group.files.front().displayName;
  const auto dot = name.rfind('.');
  if (dot != std::string_view::npos && dot > 0) name = name.substr(0, dot);
  return std::string(name).append(kArchiveExtension);
}

std::unique_ptr<FileEncoder> PackGroup(FileSystem& files, const AttachmentGroup& group,
                                       const std::string& archive, const std::string& password) {
  ZipClass zip(files);
  zip.zipFile(archive);
  zip.Password(password);
  for (const auto& attachment : group.files) zip.AddFile(attachment.file);
  return zip.Start();
}

}  // namespace quillon
