// Makes of a message what the SMTP session sends: the header block, the text, and the alternatives
// and attachments encoded into temporary files, which are read back while they are sent. Large
// files take their time, so the work is done in steps.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "codec/FileEncoder.h"
#include "internet/ComposedMessage.h"
#include "internet/OutgoingMessage.h"
#include "internet/PartFields.h"
#include "internet/ProtocolLog.h"
#include "mail/AttachmentPacking.h"
#include "mail/TemporaryFolder.h"
#include "ports/CodePage.h"
#include "ports/FileSystem.h"
#include "ports/LocalClock.h"

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

class MessageComposer {
 public:
  // Thrown: ServerError 521 for a file that is not there, 529 for what the character set lacks
  // (EncodedField.h).
  MessageComposer(const ComposerPorts& ports, const ComposerSettings& settings,
                  OutgoingMessage message);
  MessageComposer(const MessageComposer&) = delete;
  MessageComposer& operator=(const MessageComposer&) = delete;

  // The next piece of the work, about a block of a file; true when the message is complete. Thrown:
  // ServerError 534 when packing fails, 535 when encoding does, 529 as above; nothing can follow
  // that.
  bool Step();

  // The complete message. The temporary files are removed with it, or, when it does not come to
  // that, with this object.
  std::unique_ptr<MessageData> Take() { return std::move(composed_); }

  // About how many bytes it will have. Looks at the files.
  std::uint64_t ApproximateSize() const;

 private:
  void AddText();
  void EncodeAlternatives();
  void AddHtml();
  void EncodeAlternative(const Alternative& alternative);
  void EncodeText(const Alternative& alternative);
  void EncodeAttachments();
  void EncodeGroup(const AttachmentGroup& group);
  void EncodeAttachment(const Attachment& attachment);
  void EncodeFile(MessageData::Section section, const std::string& boundary,
                  const Attachment& attachment);
  PartFileLabel LabelOf(const Attachment& attachment) const;
  void Add(MessagePiece piece, std::unique_ptr<FileEncoder> encoder);
  void Then(std::function<void()> job) { jobs_.push_front(std::move(job)); }
  const std::string& AlternativesBoundary() const;
  std::string NewFile(std::string_view extension, std::int32_t failure);
  void LogMilestone(std::string_view text) const;

  const ComposerPorts ports_;
  OutgoingMessage message_;
  const MessageShape shape_;
  const bool isMime_;
  const std::string outer_;  // boundaries
  const std::string inner_;
  const std::string related_;
  bool needsLineEnd_;  // before the first uuencoded file
  std::unique_ptr<TemporaryFolder> ownFolder_;
  TemporaryFolder& folder_;
  std::unique_ptr<ComposedMessage> composed_;
  std::uint64_t textSize_ = 0;              // with the header block
  std::deque<std::function<void()>> jobs_;  // what is left to do, behind the file being made
  std::unique_ptr<FileEncoder> encoder_;
  std::int32_t failure_ = 0;  // the code when that fails
};

}  // namespace quillon
