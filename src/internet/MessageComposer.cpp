#include "internet/MessageComposer.h"

#include <string_view>
#include <utility>

#include "codec/BlockIo.h"
#include "codec/UUCode.h"
#include "codec/UuFraming.h"
#include "codec/UuSplitter.h"
#include "core/ServerError.h"
#include "internet/AttachmentPacking.h"
#include "internet/Boundary.h"
#include "internet/ComposedMessage.h"
#include "internet/PartFields.h"

namespace quillon {

namespace {

using Content = MessagePiece::Content;
using Section = MessageData::Section;

constexpr std::int32_t kNoSuchFile = 521;
constexpr std::int32_t kEncodingFailed = 535;

constexpr std::string_view kFileExtension = ".UUE";

constexpr std::string_view kPreamble =
    "> THIS IS A MESSAGE IN 'MIME' FORMAT.  Your mail reader does not support MIME.\r\n"
    "> Please read the first section, which is plain text, and ignore the rest.\r\n";

// A delimiter takes the line end before it with it (RFC 2046, section 5.1.1), so that what precedes
// keeps its own.
std::string Delimiter(const std::string& boundary) {
  return "\r\n--" + boundary + "\r\n";
}

std::string CloseDelimiter(const std::string& boundary) {
  return "\r\n--" + boundary + "--";
}

void RequireFile(FileSystem& files, const char* what, const std::string& path) {
  if (files.FileExists(path)) return;
  throw ServerError(kNoSuchFile, std::string(what) + " " + path + " does not exist.");
}

// Encodes files into a temporary folder.
class FileEncoder {
 public:
  FileEncoder(const ComposerPorts& ports, TemporaryFolder& folder)
      : ports_(ports), folder_(folder) {}

  std::string Base64(const std::string& path) {
    auto encoded = NewFile();
    ShortBool result = kFalse;
    UUCode(ports_.files).Base64EncodeFile(path, encoded, result);
    if (result != kTrue) throw ServerError(kEncodingFailed);
    return encoded;
  }

  // The block names the attachment as the reader shall see it, not the file.
  std::string Uu(const Attachment& attachment) {
    auto encoded = NewFile();
    const auto input = ports_.files.Open(attachment.file, OpenMode::kRead);
    OutputFile output(ports_.files, encoded);
    output.Append(ports_.codePage.ToBytes(UuBeginLine(SafeName(attachment.displayName))));
    if (!input || !EncodeUuData(*input, kWholeFile, output)) throw ServerError(kEncodingFailed);
    output.Append(UuTrailer(true));
    if (!output.Finish()) throw ServerError(kEncodingFailed);
    return encoded;
  }

 private:
  std::string NewFile() {
    auto path = folder_.NewFile(kFileExtension);
    if (path.empty()) throw ServerError(kEncodingFailed);
    return path;
  }

  const ComposerPorts& ports_;
  TemporaryFolder& folder_;
};

class Composer {
 public:
  Composer(const ComposerPorts& ports, const ComposerSettings& settings, OutgoingMessage message);

  std::unique_ptr<MessageData> Compose();

 private:
  void AddText();
  void AddAlternatives();
  void AddAttachments();
  MessagePiece MimePiece(const Attachment& attachment);
  MessagePiece UuPiece(const Attachment& attachment, bool first);
  void LogMilestone(std::string_view text) const;

  const ComposerPorts& ports_;
  OutgoingMessage message_;
  const MessageShape shape_;
  const bool isMime_;
  const std::string outer_;
  const std::string inner_;
  bool textEndsLine_;
  std::unique_ptr<TemporaryFolder> ownFolder_;
  TemporaryFolder& folder_;
  FileEncoder encoder_;
  std::unique_ptr<ComposedMessage> composed_;
};

Composer::Composer(const ComposerPorts& ports, const ComposerSettings& settings,
                   OutgoingMessage message)
    : ports_(ports),
      message_(std::move(message)),
      shape_(ShapeOf(message_)),
      isMime_(shape_ == MessageShape::Alternatives || shape_ == MessageShape::Mixed),
      outer_(isMime_ ? OuterBoundary(message_.body) : std::string()),
      inner_(isMime_ ? InnerBoundary(message_.body) : std::string()),
      textEndsLine_(message_.body.empty() || message_.body.back() == '\n' ||
                    message_.body.back() == '\r'),
      ownFolder_(std::make_unique<TemporaryFolder>(ports.files, settings.temporaryDirectory,
                                                   settings.keepTemporaryFiles)),
      folder_(*ownFolder_),
      encoder_(ports, folder_),
      composed_(std::make_unique<ComposedMessage>(ports.files, std::move(message_.body),
                                                  static_cast<std::size_t>(settings.blockSize),
                                                  std::move(ownFolder_))) {}

std::unique_ptr<MessageData> Composer::Compose() {
  for (const auto& alternative : message_.alternatives) {
    RequireFile(ports_.files, "Alternative", alternative.file);
  }
  for (const auto& attachment : message_.attachments) {
    RequireFile(ports_.files, "Attachment", attachment.file);
  }
  AddText();
  AddAlternatives();
  AddAttachments();
  return std::move(composed_);
}

void Composer::AddText() {
  auto lines = BuildHeaderBlock(message_, ports_.clock.Now(), outer_);
  if (isMime_) {
    lines.append(kPreamble).append("--").append(outer_).append("\r\n");
    // The text is the first of its own forms: a reader shows one of them, and the attachments.
    if (shape_ == MessageShape::Mixed && !message_.alternatives.empty()) {
      lines += MultipartFields("alternative", inner_);
      lines.append("--").append(inner_).append("\r\n");
    }
    lines += TextPartFields(message_.charset);
  }
  composed_->Add({Section::Text, std::move(lines), Content::Text, {}});
}

void Composer::AddAlternatives() {
  if (message_.alternatives.empty()) return;
  LogMilestone("Encoding alternatives... ");
  const auto& boundary = shape_ == MessageShape::Mixed ? inner_ : outer_;
  for (const auto& alternative : message_.alternatives) {
    composed_->Add(
        {Section::Alternatives,
         Delimiter(boundary) + AlternativeFields(alternative.contentType, message_.charset),
         Content::Base64File, encoder_.Base64(alternative.file)});
  }
  composed_->Add({Section::Alternatives, CloseDelimiter(boundary), Content::None, {}});
}

void Composer::AddAttachments() {
  if (message_.attachments.empty()) return;
  LogMilestone("Encoding attachments... ");
  bool first = true;
  for (const auto& attachment :
       PackAttachments(ports_.files, folder_, std::move(message_.attachments),
                       message_.attachmentEncoding, message_.zipPassword)) {
    composed_->Add(isMime_ ? MimePiece(attachment) : UuPiece(attachment, first));
    first = false;
  }
  if (isMime_) composed_->Add({Section::Attachments, CloseDelimiter(outer_), Content::None, {}});
}

MessagePiece Composer::MimePiece(const Attachment& attachment) {
  return {Section::Attachments,
          Delimiter(outer_) + AttachmentFields(attachment.displayName, ports_.codePage),
          Content::Base64File, encoder_.Base64(attachment.file)};
}

MessagePiece Composer::UuPiece(const Attachment& attachment, bool first) {
  return {Section::Attachments, first && !textEndsLine_ ? "\r\n" : "", Content::UuFile,
          encoder_.Uu(attachment)};
}

void Composer::LogMilestone(std::string_view text) const {
  if (ports_.log.IsOpen()) ports_.log.WriteDebug(LogTime(ports_.clock.Now()) + " ", text);
}

}  // namespace

std::unique_ptr<MessageData> ComposeMessage(const ComposerPorts& ports,
                                            const ComposerSettings& settings,
                                            OutgoingMessage message) {
  return Composer(ports, settings, std::move(message)).Compose();
}

}  // namespace quillon
