// The attachments of a message as they are handed to a mail system: as the client gave them, or
// packed as he wants it. Archives lie in a temporary folder that goes with this object.
#pragma once

#include <string>
#include <vector>

#include "mail/BackEnd.h"
#include "mail/TemporaryFolder.h"
#include "ports/FileSystem.h"

namespace quillon {

class OutgoingFiles {
 public:
  // Throws ServerError 534 when a file cannot be packed.
  OutgoingFiles(FileSystem& files, const MailRequest& request);

  const std::vector<Attachment>& List() const noexcept { return list_; }

 private:
  TemporaryFolder folder_;
  std::vector<Attachment> list_;
};

}  // namespace quillon
