// The lines of a part in which uuencoded files may stand: these are taken out and written as
// attachments, and what is left goes, decoded, to a sink.
//
// Text that only looks like such a file stays text. A line is data when it is as long as it claims;
// a shorter one, whose blanks at the end a mail system may have taken away, waits until the lines
// behind it tell.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "codec/Base64.h"
#include "codec/ByteSink.h"
#include "codec/ContentDecoder.h"
#include "codec/PartFile.h"
#include "codec/UuFraming.h"

namespace quillon {

// Where a "begin " line counts. At the start means before all other text; behind a first file it is
// anywhere.
enum class UuSearch { Nowhere, AtStart, Anywhere };

class TextPart {
 public:
  // `rest` takes what is no file. The first file is called `firstName`, unless that is empty; the
  // others, and then the first too, have the name of their "begin " line.
  TextPart(const SplitSettings& settings, AttachmentList& list, ByteSink& rest,
           std::int16_t encoding, UuSearch search, std::string firstName = {});

  void Line(std::string_view line, bool endsLine);
  void Finish(ContentEnd end);

  bool InAttachment() const noexcept { return inFile_; }

  // Whether a file has been found.
  bool HasFiles() const noexcept { return hasFiles_; }

 private:
  bool BeginsFile(std::string_view line);
  bool TakesLine(std::string_view line);
  bool TakesBase64Line(std::string_view line);
  bool TakesUuEnd();
  bool Hold(std::string_view line);
  void TakeHeld();
  void Decode(std::string_view line);
  void OpenFile();
  void FlushData();
  void CloseFile();
  void LeaveFile();
  void TextLine(std::string_view line, bool endsLine);

  const SplitSettings& settings_;
  AttachmentList& list_;
  ContentDecoder text_;
  UuSearch search_;
  const std::string firstName_;

  bool atLineStart_ = true;
  bool hasFiles_ = false;
  std::optional<UuBegin> begin_;  // of a file, if data follows
  std::string beginLine_;
  bool inFile_ = false;            // data has followed
  bool dataEnded_ = false;         // "end" is all that may follow
  std::vector<std::string> held_;  // lines that may be data
  std::size_t heldBytes_ = 0;
  std::unique_ptr<PartFile> file_;
  std::string data_;  // decoded, or base64 text to decode
  Base64Decoder base64_;
};

}  // namespace quillon
