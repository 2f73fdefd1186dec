// Where the files of a received message go, and those that another program has written for it.
#pragma once

#include <string>
#include <vector>

#include "codec/PartFile.h"
#include "mail/BackEnd.h"
#include "ports/FileSystem.h"

namespace quillon {

// How a message is received. Without a directory of their own attachments go where temporary files
// go.
SplitSettings SplitSettingsOf(const MailRequest& request, FileSystem& files);

// Unless they are kept, the files are removed with this object.
class ReceivedFiles {
 public:
  ReceivedFiles(FileSystem& files, const MailRequest& request);

  // Makes an empty file for an attachment of this name, which the caller has filled afterwards.
  // Returns its path; empty when the directory takes no file.
  std::string NewFile(const std::string& name);

  // Copies a file; false when it cannot be read, or the copy cannot be written.
  bool Copy(const std::string& source, const std::string& name);

  std::vector<Attachment> Keep() { return list_.Keep(); }

 private:
  FileSystem& files_;
  const SplitSettings settings_;
  AttachmentList list_;
};

}  // namespace quillon
