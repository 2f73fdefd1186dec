#include "internet/AttachmentPacking.h"

#include <span>
#include <string_view>
#include <utility>

#include "codec/ZipClass.h"
#include "core/ServerError.h"
#include "internet/OutgoingMessage.h"

namespace quillon {

namespace {

constexpr std::int32_t kPackingFailed = 534;
constexpr std::string_view kExtension = ".zip";

// "report.tar.gz" becomes "report.tar.zip"; a dot at the begin of a name starts no extension.
std::string ArchiveName(std::string_view name) {
  const auto dot = name.rfind('.');
  if (dot != std::string_view::npos && dot > 0) name = name.substr(0, dot);
  return std::string(name).append(kExtension);
}

Attachment Pack(FileSystem& files, TemporaryFolder& folder, std::span<const Attachment> attachments,
                const std::string& password) {
  const auto path = folder.NewFile(kExtension);
  ZipClass zip(files);
  zip.zipFile(path);
  zip.Password(password);
  for (const auto& attachment : attachments) zip.AddFile(attachment.file);
  if (path.empty() || zip.zip() != kTrue) throw ServerError(kPackingFailed);
  return {path, ArchiveName(attachments.front().displayName)};
}

}  // namespace

std::vector<Attachment> PackAttachments(FileSystem& files, TemporaryFolder& folder,
                                        std::vector<Attachment> attachments,
                                        std::int16_t attachmentEncoding,
                                        const std::string& password) {
  if (attachments.empty()) return attachments;
  if ((attachmentEncoding & attachment_encoding::kOneArchive) != 0) {
    return {Pack(files, folder, attachments, password)};
  }
  if ((attachmentEncoding & attachment_encoding::kArchiveEach) != 0) {
    for (auto& attachment : attachments) {
      attachment = Pack(files, folder, std::span(&attachment, 1), password);
    }
  }
  return attachments;
}

}  // namespace quillon
