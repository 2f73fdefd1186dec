// Reads the header of a message or of a part of it, for the fields that tell what the content is.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "codec/Attachment.h"
#include "codec/clsMIMEPart.h"

namespace quillon {

class TextReader;

class PartHeader {
 public:
  // A header that is longer is taken as ended: the rest is content.
  static constexpr std::size_t kMaximumHeaderBytes = 16U << 20U;
  // Of each of the fields; the rest of a longer one does not count.
  static constexpr std::size_t kMaximumFieldBytes = 64U << 10U;

  // Lines behind a line of blanks, while no field follows.
  static constexpr std::size_t kMaximumHeldBytes = 64U << 10U;

  // One line without its line end, or a piece of it. The header ends at an empty line, which
  // belongs to it; a line that is no field and continues none, or goes beyond the limit, is content
  // already.
  enum class Result { More, Ended, Content };
  Result Line(std::string_view line, bool endsLine);

  // The lines, ended by CR LF, that turned out to be content when the header ended: an empty line
  // may hold blanks, and an indented line behind it is a fold only when more fields come (RFC 5322,
  // section 4.2). To be called before Finish.
  std::string TakeHeld() { return std::exchange(held_, {}); }

  // What the header says. `type` and `encoding` are matched as substrings; `inDigest` changes what
  // a part without a Content-Type is. Then ready for another header.
  clsMIMEPart Finish(bool inDigest, const TextReader& reader);

  bool HasLines() const noexcept { return size_ > 0; }

  // Whether the Content-Disposition of the part last finished was "attachment".
  bool IsAttachment() const noexcept { return isAttachment_; }

  // Its label, for whoever keeps it as a file.
  const PartLabel& Label() const noexcept { return label_; }

 private:
  enum Field : std::size_t { kType, kEncoding, kDisposition, kId, kFieldCount };

  std::string* FieldOf(std::string_view line);
  void StartField(std::string_view line);
  void Append(std::string_view text);
  bool BeginsHeader(std::string_view line) const;
  bool Hold(std::string_view line, bool wholeLine, bool endsLine);

  std::array<std::string, kFieldCount> fields_;
  std::array<bool, kFieldCount> seen_{};
  std::string* current_ = nullptr;  // the field that a continuation continues
  std::size_t size_ = 0;
  bool ofMessage_ = true;  // a message's header comes first, then those of its parts
  bool atLineStart_ = true;
  bool hasField_ = false;
  bool holds_ = false;  // the lines that come are held
  std::string held_;
  bool isAttachment_ = false;
  PartLabel label_;
};

// The extension for content of a type, from a small table: "PDF" for application/pdf; empty for a
// type unknown to it.
std::string ExtensionOfType(std::string_view contentType);

// The other way round, "application/pdf" for ".pdf" in any case; "application/octet-stream" for an
// extension unknown to the table, and for what would be a message.
std::string TypeOfExtension(std::string_view fileName);

// The name of an alternative rendering that has none of its own.
std::string AlternativeName(std::string_view contentType);

}  // namespace quillon
