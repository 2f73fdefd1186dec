// A part that becomes a file. When its content is uuencoded, the files in it become attachments,
// and so does the text around them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "codec/ByteSink.h"
#include "codec/PartFile.h"
#include "codec/TextPart.h"

namespace quillon {

class FilePart final : private ByteSink {
 public:
  // `name` is that of the file; `ownName` the one that the sender gave, if any, which is that of
  // the first uuencoded file, too.
  FilePart(const SplitSettings& settings, AttachmentList& list, std::string name,
           const std::string& ownName, std::int16_t encoding, UuSearch search);

  void Line(std::string_view line, bool endsLine) { content_.Line(line, endsLine); }
  void Finish(ContentEnd end);

 private:
  void Append(std::string_view bytes) override;
  void Open();

  const SplitSettings& settings_;
  AttachmentList& list_;
  const std::string name_;
  TextPart content_;
  std::unique_ptr<PartFile> file_;  // made when it is known to be needed
};

}  // namespace quillon
