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
  // the first uuencoded file, too. The label is that of what is not uuencoded.
  FilePart(const SplitSettings& settings, AttachmentList& list, std::string name,
           const std::string& ownName, std::int16_t encoding, UuSearch search, PartLabel label);

  void Line(std::string_view line, bool endsLine) { content_.Line(line, endsLine); }
  void Finish(ContentEnd end);

  // The content goes there, too.
  void CopyTo(ByteSink& copy) noexcept { copy_ = &copy; }

 private:
  void Append(std::string_view bytes) override;
  void Open();

  const SplitSettings& settings_;
  AttachmentList& list_;
  const std::string name_;
  const PartLabel label_;
  TextPart content_;
  ByteSink* copy_ = nullptr;
  std::unique_ptr<PartFile> file_;  // made when it is known to be needed
};

}  // namespace quillon
