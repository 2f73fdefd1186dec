// Makes of a message what the SMTP session sends: the header block, the text, and the alternatives
// and attachments encoded into temporary files, which are read back while they are sent.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "internet/MessageData.h"
#include "internet/OutgoingMessage.h"
#include "internet/ProtocolLog.h"
#include "platform/CodePage.h"
#include "platform/FileSystem.h"
#include "platform/LocalClock.h"

namespace quillon {

struct ComposerPorts {
  FileSystem& files;
  const CodePage& codePage;
  const LocalClock& clock;
  ProtocolLog& log;
};

struct ComposerSettings {
  std::string temporaryDirectory;  // empty: the system's
  bool keepTemporaryFiles = false;
  std::int32_t blockSize = 0;  // the text leaves in pieces of that many bytes; 0: in those it likes
};

// The temporary files are removed with the result, and when this throws. Thrown: ServerError 521
// for a file that is not there, 534 when packing fails, 535 when encoding does.
std::unique_ptr<MessageData> ComposeMessage(const ComposerPorts& ports,
                                            const ComposerSettings& settings,
                                            OutgoingMessage message);

}  // namespace quillon
