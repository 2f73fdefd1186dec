#include "internet/MessageComposer.h"

#include <string_view>
#include <utility>

#include "codec/Base64FileEncoder.h"
#include "codec/BodyEncoding.h"
#include "codec/PartHeader.h"
#include "codec/UuFileEncoder.h"
#include "codec/UuFraming.h"
#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "core/Text.h"
#include "core/Utf8.h"
#include "core/WholeFile.h"
#include "internet/Boundary.h"
#include "internet/EncodedField.h"
#include "internet/PartFields.h"

namespace quillon {

namespace {

using Content = MessagePiece::Content;
using Section = MessageData::Section;

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
  throw ServerError(error_code::kNoAttachment, std::string(what) + " " + path + " does not exist.");
}

// What no boundary may stand in.
std::string TextsOf(const OutgoingMessage& message) {
  return message.html.empty() ? message.body : message.body + "\n" + message.html;
}

OutgoingMessage Prepared(OutgoingMessage message) {
  PrepareText(message);
  return message;
}

bool IsTextType(std::string_view contentType) {
  return UpperAscii(Trim(contentType)).starts_with("TEXT/");
}

// The text of a file, of which nothing is known but its bytes.
std::string FileText(std::string_view bytes, const CodePage& codePage) {
  if (bytes.starts_with("\xEF\xBB\xBF")) return std::string(bytes.substr(3));
  const bool little = bytes.starts_with("\xFF\xFE");
  if (!little && !bytes.starts_with("\xFE\xFF")) {
    return IsUtf8(bytes) ? std::string(bytes) : codePage.ToText(bytes);
  }
  std::u16string units;
  units.reserve(bytes.size() / 2);
  for (std::size_t at = 2; at + 1 < bytes.size(); at += 2) {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    units += static_cast<char16_t>(little ? second << 8U | first : first << 8U | second);
  }
  return Utf8FromUtf16(units);
}

}  // namespace

MessageComposer::MessageComposer(const ComposerPorts& ports, const ComposerSettings& settings,
                                 OutgoingMessage message)
    : ports_(ports),
      message_(Prepared(std::move(message))),
      shape_(ShapeOf(message_)),
      isMime_(shape_ == MessageShape::Alternatives || shape_ == MessageShape::Mixed),
      outer_(isMime_ ? OuterBoundary(TextsOf(message_)) : std::string()),
      inner_(isMime_ ? InnerBoundary(TextsOf(message_)) : std::string()),
      related_(message_.inlineFiles.empty() ? std::string() : RelatedBoundary(TextsOf(message_))),
      needsLineEnd_(!message_.body.empty() && message_.body.back() != '\n' &&
                    message_.body.back() != '\r'),
      ownFolder_(std::make_unique<TemporaryFolder>(ports.files, settings.temporaryDirectory,
                                                   settings.keepTemporaryFiles)),
      folder_(*ownFolder_),
      composed_(std::make_unique<ComposedMessage>(
          ports.files, static_cast<std::size_t>(settings.blockSize), std::move(ownFolder_))) {
  for (const auto& alternative : message_.alternatives) {
    RequireFile(ports_.files, "Alternative", alternative.file);
  }
  for (const auto* const files : {&message_.inlineFiles, &message_.attachments}) {
    for (const auto& one : *files) RequireFile(ports_.files, "Attachment", one.file);
  }
  AddText();
  if (!message_.attachments.empty()) Then([this] { EncodeAttachments(); });
  if (message_.HasAlternatives()) Then([this] { EncodeAlternatives(); });
}

bool MessageComposer::Step() {
  if (encoder_ != nullptr) {
    const auto state = encoder_->Step();
    if (state == FileEncoder::State::Failed) throw ServerError(failure_);
    if (state == FileEncoder::State::Done) encoder_.reset();
  } else if (!jobs_.empty()) {
    const auto job = std::move(jobs_.front());
    jobs_.pop_front();
    job();
  }
  return encoder_ == nullptr && jobs_.empty();
}

std::uint64_t MessageComposer::ApproximateSize() const {
  std::uint64_t bytes = 0;
  const auto add = [&](const std::string& path) {
    const auto file = ports_.files.Open(path, OpenMode::kRead);
    if (file != nullptr) bytes += file->Size().value_or(0);
  };
  for (const auto& alternative : message_.alternatives) add(alternative.file);
  for (const auto& file : message_.inlineFiles) add(file.file);
  for (const auto& attachment : message_.attachments) add(attachment.file);
  return textSize_ + message_.html.size() + bytes + bytes / 3;
}

void MessageComposer::AddText() {
  auto lines = BuildHeaderBlock(message_, ports_.clock.Now(), outer_);
  if (isMime_) {
    lines.append(kPreamble).append("--").append(outer_).append("\r\n");
    // The text is the first of its own forms: a reader shows one of them, and the attachments.
    if (shape_ == MessageShape::Mixed && message_.HasAlternatives()) {
      lines += MultipartFields("alternative", inner_, message_.modern);
      lines.append("--").append(inner_).append("\r\n");
    }
    lines += TextPartFields(message_.charset,
                            message_.transferEncoding.empty() ? "7bit" : message_.transferEncoding);
  }
  composed_->Add({Section::Text, std::move(lines), Content::Text, {}, std::move(message_.body)});
  textSize_ = composed_->Size();
}

void MessageComposer::EncodeAlternatives() {
  LogMilestone("Encoding alternatives... ");
  Then([this] {
    composed_->Add(
        {Section::Alternatives, CloseDelimiter(AlternativesBoundary()), Content::None, {}});
  });
  for (auto one = message_.alternatives.rbegin(); one != message_.alternatives.rend(); ++one) {
    Then([this, &alternative = *one] { EncodeAlternative(alternative); });
  }
  if (!message_.html.empty()) Then([this] { AddHtml(); });
}

// With the pictures that it shows it is one part (RFC 2387).
void MessageComposer::AddHtml() {
  const bool hasFiles = !message_.inlineFiles.empty();
  auto lines = Delimiter(AlternativesBoundary());
  if (hasFiles) {
    lines += MultipartFields("related;\r\n type=\"text/html\"", related_, message_.modern);
    lines.append("--").append(related_).append("\r\n");
  }
  lines += AlternativeFields("text/html", message_.htmlCharset, message_.htmlTransferEncoding);
  composed_->Add(
      {Section::Alternatives, std::move(lines), Content::Text, {}, std::move(message_.html)});
  if (!hasFiles) return;
  Then([this] {
    composed_->Add({Section::Alternatives, CloseDelimiter(related_), Content::None});
  });
  for (auto one = message_.inlineFiles.rbegin(); one != message_.inlineFiles.rend(); ++one) {
    Then([this, &file = *one] { EncodeFile(Section::Alternatives, related_, file); });
  }
}

void MessageComposer::EncodeAlternative(const Alternative& alternative) {
  if (message_.encoder && IsTextType(alternative.contentType)) return EncodeText(alternative);
  auto path = NewFile(kFileExtension, error_code::kEncoding);
  auto encoder = std::make_unique<Base64FileEncoder>(ports_.files, alternative.file, path);
  Add({Section::Alternatives,
       Delimiter(AlternativesBoundary()) +
           AlternativeFields(alternative.contentType,
                             message_.encoder ? std::string() : message_.charset, "base64"),
       Content::Base64File, std::move(path)},
      std::move(encoder));
}

// What it says of a character set itself is about the file.
void MessageComposer::EncodeText(const Alternative& alternative) {
  const auto type =
      Trim(std::string_view(alternative.contentType).substr(0, alternative.contentType.find(';')));
  const auto bytes = ReadWholeFile(ports_.files, alternative.file);
  if (!bytes) throw ServerError(error_code::kEncoding);
  const auto text =
      FileText({reinterpret_cast<const char*>(bytes->data()), bytes->size()}, ports_.codePage);
  auto body = EncodeBody(EncodedBytes(text, *message_.encoder, "An alternative"));
  composed_->Add({Section::Alternatives,
                  Delimiter(AlternativesBoundary()) +
                      AlternativeFields(type, message_.encoder->Label(text), body.encoding),
                  Content::Text,
                  {},
                  std::move(body.text)});
}

void MessageComposer::EncodeAttachments() {
  LogMilestone("Encoding attachments... ");
  if (isMime_) {
    Then([this] {
      composed_->Add({Section::Attachments, CloseDelimiter(outer_), Content::None, {}});
    });
  }
  auto groups = GroupAttachments(message_.attachments, message_.attachmentEncoding);
  for (auto group = groups.rbegin(); group != groups.rend(); ++group) {
    Then([this, files = std::move(*group)] { EncodeGroup(files); });
  }
}

void MessageComposer::EncodeGroup(const AttachmentGroup& group) {
  if (!group.packed) return EncodeAttachment(group.files.front());
  const auto archive = NewFile(kArchiveExtension, error_code::kZipping);
  failure_ = error_code::kZipping;
  encoder_ = PackGroup(ports_.files, group, archive, message_.zipPassword);
  Then([this, attachment = Attachment{archive, ArchiveName(group)}] {
    EncodeAttachment(attachment);
  });
}

void MessageComposer::EncodeAttachment(const Attachment& attachment) {
  if (isMime_) return EncodeFile(Section::Attachments, outer_, attachment);
  // The block names the attachment as the reader shall see it, not the file.
  auto path = NewFile(kFileExtension, error_code::kEncoding);
  auto encoder = std::make_unique<UuFileEncoder>(
      ports_.files, attachment.file, path,
      ports_.codePage.ToBytes(UuBeginLine(SafeName(attachment.displayName))), UuTrailer(true));
  Add({Section::Attachments, std::exchange(needsLineEnd_, false) ? "\r\n" : "", Content::UuFile,
       std::move(path)},
      std::move(encoder));
}

void MessageComposer::EncodeFile(Section section, const std::string& boundary,
                                 const Attachment& attachment) {
  auto path = NewFile(kFileExtension, error_code::kEncoding);
  auto encoder = std::make_unique<Base64FileEncoder>(ports_.files, attachment.file, path);
  const auto label = LabelOf(attachment);
  Add({section,
       Delimiter(boundary) + (message_.encoder ? FileFields(label, *message_.encoder)
                                               : FileFields(label, ports_.codePage)),
       Content::Base64File, std::move(path)},
      std::move(encoder));
}

// What the client says of it, else what its name does, where the contract leaves a choice.
PartFileLabel MessageComposer::LabelOf(const Attachment& attachment) const {
  const bool isInline = attachment.isInline;
  PartFileLabel label{attachment.displayName, "application/octet-stream",
                      isInline ? attachment.label.contentId : std::string()};
  if (attachment.typeIsClients) {
    label.contentType = attachment.label.contentType;
  } else if (isInline || message_.modern) {
    label.contentType = TypeOfExtension(attachment.displayName);
  }
  return label;
}

// A piece that needs its file first.
void MessageComposer::Add(MessagePiece piece, std::unique_ptr<FileEncoder> encoder) {
  failure_ = error_code::kEncoding;
  encoder_ = std::move(encoder);
  Then([this, added = std::move(piece)] { composed_->Add(added); });
}

std::string MessageComposer::NewFile(std::string_view extension, std::int32_t failure) {
  auto path = folder_.NewFile(extension);
  if (path.empty()) throw ServerError(failure);
  return path;
}

const std::string& MessageComposer::AlternativesBoundary() const {
  return shape_ == MessageShape::Mixed ? inner_ : outer_;
}

void MessageComposer::LogMilestone(std::string_view text) const {
  if (ports_.log.IsOpen()) ports_.log.WriteDebug(LogTime(ports_.clock.Now()) + " ", text);
}

}  // namespace quillon
