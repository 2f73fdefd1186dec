// The files that a received message leaves behind, and the one that is being written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "codec/Attachment.h"
#include "codec/ByteSink.h"

namespace quillon {

class File;
class FileSystem;

struct SplitSettings {
  std::string directory;  // where the files go
  bool suppressAttachments = false;
  bool suppressAlternatives = false;
  bool returnShortPaths = false;
  bool headersInBody = false;                // the text begins with the header and an empty line
  bool rawHeaders = false;                   // which is read in the ANSI code page
  bool expandTnef = false;                   // files of TNEF are opened
  bool htmlAsText = false;                   // HTML without a plain text becomes one
  std::size_t maximumBodyLines = 0;          // of the message text; the rest is dropped; 0: all
  std::size_t maximumBodyBytes = 4U << 20U;  // a longer message text goes to "MESSAGE.TXT"
};

// Text.
struct SplitMessage {
  std::string body;
  std::string html;  // of the first part that is one; empty when it is too long, too
  std::vector<Attachment> attachments;
};

// What has been written so far. Unless it is kept, the files are removed with the list.
class AttachmentList {
 public:
  explicit AttachmentList(FileSystem& files) : files_(files) {}
  ~AttachmentList();
  AttachmentList(const AttachmentList&) = delete;
  AttachmentList& operator=(const AttachmentList&) = delete;

  // So many files are enough of one message.
  static constexpr std::size_t kMaximumFiles = 10000;
  bool IsFull() const noexcept { return attachments_.size() >= kMaximumFiles; }

  void Fail() noexcept { failed_ = true; }
  bool Failed() const noexcept { return failed_; }

  // Makes a file under a cleaned name that no other file has; `first` puts it before the others.
  // Null when the directory takes none, which fails the list.
  std::unique_ptr<File> NewFile(const SplitSettings& settings, std::string_view name,
                                std::string& path, bool first = false, PartLabel label = {});

  // The files that there are, in their order.
  std::size_t Count() const noexcept { return attachments_.size(); }
  const std::string& PathOf(std::size_t index) const { return paths_[index]; }
  const std::string& NameOf(std::size_t index) const { return attachments_[index].displayName; }
  std::unique_ptr<File> Read(std::size_t index);
  // Out of the list, and off the disk.
  void Remove(std::size_t index);

  std::vector<Attachment> Keep();

 private:
  FileSystem& files_;
  std::vector<std::string> paths_;  // of the attachments
  std::vector<Attachment> attachments_;
  bool failed_ = false;
};

// A file of the list that is being written. Its failures fail the list.
class PartFile final : public ByteSink {
 public:
  PartFile(const SplitSettings& settings, std::string_view name, AttachmentList& list,
           bool first = false, const PartLabel& label = {});
  ~PartFile() override;

  void Append(std::string_view bytes) override;
  void Close();

 private:
  AttachmentList& list_;
  std::unique_ptr<File> file_;
};

}  // namespace quillon
