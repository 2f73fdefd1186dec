// Splits a received message, as it arrives, into the text of its body and the files of its
// alternatives and attachments (RFC 2045, 2046). docs/received-messages.md says how for users.
//
// Memory stays flat: parts are decoded line by line into their files, and a body too long for the
// message text goes to a file as well. Limits guard against hostile nesting; what lies beyond one
// is kept as plain content, never dropped.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "codec/BodyCollector.h"
#include "codec/FilePart.h"
#include "codec/HeldHtml.h"
#include "codec/HeldRendering.h"
#include "codec/PartFile.h"
#include "codec/PartHeader.h"
#include "codec/TextPart.h"
#include "codec/TextReader.h"
#include "codec/clsMIMEPart.h"
#include "codec/clsStack.h"

namespace quillon {

class FileSystem;

class MessageSplitter {
 public:
  static constexpr std::size_t kMaximumDepth = 32;
  static constexpr std::size_t kMaximumParts = 10000;

  MessageSplitter(FileSystem& files, const TextReader& reader, const SplitSettings& settings);

  // A line of the message, its header included, without its line end; a long one may come in
  // pieces. False when a file could not be written: the message is lost, and Finish is not to be
  // called.
  bool Line(std::string_view line, bool endsLine);

  // The message has ended. False as above. Without this call the destructor removes the files that
  // were made.
  bool Finish(SplitMessage& message);

  // Whether the last line belongs to the header of the message, without the empty line at its end.
  bool InMessageHeader() const noexcept { return inMessageHeader_; }

  // Whether the last line belongs to an attachment.
  bool InAttachment() const noexcept {
    return file_ != nullptr || (text_ != nullptr && text_->InAttachment());
  }

 private:
  enum class State { Header, Preamble, Content, Epilogue };
  enum class Role { Body, Rendering, Alternative, Attachment, Discard };

  // A multipart whose parts are being read.
  struct Container {
    clsMIMEPart part;
    std::size_t group =
        0;  // the alternative group it belongs to: its level, counted from 1; 0 for none
    bool hasBody = false;                      // of an alternative: its plain rendering is the body
    std::unique_ptr<HeldRendering> rendering;  // the body without a plain one
    bool hasParts = false;
    std::string preamble;        // kept until the first part comes: without any it is the content
    bool preambleBegun = false;  // in the body: it was too long to be kept
  };

  // A boundary that a line stands for.
  struct Delimiter {
    std::size_t level = 0;  // of its container, counted from 1; 0 for none
    bool ends = false;      // the container, not only a part of it
  };

  void TakeLine(std::string_view line, bool endsLine, bool whole);
  void HeaderLine(std::string_view line, bool endsLine, bool whole);
  bool BoundaryLine(std::string_view line);
  Delimiter DelimiterOf(std::string_view line);
  void CloseContainer(ContentEnd end);
  void KeepPreamble(Container& container);
  void StartPart();
  void StartContent();
  void OpenContent(clsMIMEPart part);
  void StartRawAttachment();
  void EndContent(ContentEnd end);
  void PreambleLine(std::string_view line, bool endsLine);
  void ContentLine(std::string_view line, bool endsLine);

  Role RoleOf(const clsMIMEPart& part);
  Role RoleInGroup(const clsMIMEPart& part, Container& group);
  Container* GroupOf(const Container& container);
  std::string NameOf(const clsMIMEPart& part, Role role) const;
  void OpenText(const clsMIMEPart& part, ByteSink& sink, UuSearch search);
  bool HoldHtml(const clsMIMEPart& part, Role role, ByteSink* onward);
  ByteSink& SinkFor(const clsMIMEPart& part, Role role, ByteSink& onward);
  void FinishHtml();
  void PutHtmlAsText(const std::string& html);
  void OpenFile(const clsMIMEPart& part, Role role, UuSearch search);
  void NoteTnef();
  void OpenTnefFiles();

  const TextReader reader_;
  const SplitSettings settings_;

  State state_ = State::Header;
  bool atLineStart_ = true;
  bool inMessageHeader_ = true;
  bool boundariesCount_ = true;  // false once there are too many parts
  std::size_t partCount_ = 0;
  PartHeader header_;
  clsStack<Container> stack_;

  AttachmentList attachments_;
  BodyCollector body_;
  bool hasBody_ = false;

  // The part being read: text for the body, or a file, or neither when it is discarded.
  std::unique_ptr<TextPart> text_;
  std::unique_ptr<FilePart> file_;
  std::unique_ptr<HeldHtml> heldHtml_;  // of that part
  Role htmlRole_ = Role::Body;
  std::optional<std::string> html_;       // of the first part that has some
  std::optional<std::size_t> firstTnef_;  // of the files of a part that is TNEF
  std::set<std::string> tnefPaths_;
};

}  // namespace quillon
