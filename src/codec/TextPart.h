// A part that is text for the body. Uuencoded files that stand between its lines are taken out and
// written as attachments.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "codec/Base64.h"
#include "codec/BodyCollector.h"
#include "codec/ContentDecoder.h"
#include "codec/PartFile.h"
#include "codec/UuFraming.h"

namespace quillon {

class TextPart {
 public:
  TextPart(FileSystem& files, const SplitSettings& settings, AttachmentList& list,
           BodyCollector& body, std::int16_t encoding);

  void Line(std::string_view line, bool endsLine);
  void Finish(ContentEnd end);

  bool InAttachment() const noexcept { return inFile_; }

 private:
  bool TakesLine(std::string_view line);
  bool TakesDataLine(std::string_view line);
  bool LooksLikeData(std::string_view line) const;
  void OpenFile();
  void FlushData();
  void CloseFile();

  FileSystem& files_;
  const SplitSettings& settings_;
  AttachmentList& list_;
  ContentDecoder text_;
  const bool mayHoldFiles_;  // encoded text holds no uuencoded lines of its own

  bool atLineStart_ = true;
  std::optional<UuBegin> begin_;  // of a file that begins, if its first line of data follows
  std::string beginLine_;
  bool inFile_ = false;
  bool dataEnded_ = false;  // the line before "end" has been seen
  std::unique_ptr<PartFile> file_;
  std::string data_;  // decoded, or base64 text to decode
  Base64Decoder base64_;
};

}  // namespace quillon
