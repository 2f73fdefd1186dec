// Collects the text of a message: in memory up to a limit, in the file "MESSAGE.TXT" beyond it.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "codec/ByteSink.h"
#include "codec/PartFile.h"

namespace quillon {

class BodyCollector final : public ByteSink {
 public:
  BodyCollector(const SplitSettings& settings, AttachmentList& list)
      : settings_(settings), list_(list) {}

  void Append(std::string_view bytes) override;

  // The same, but of no account for the limit of lines.
  void AddInFront(std::string_view bytes) { Put(bytes); }

  // Puts a line end between what is there and what comes.
  void SeparateFromNext();

  // The text, or the sentence that stands in its place.
  std::string Finish();

 private:
  std::string_view WithinLines(std::string_view bytes);
  void Put(std::string_view bytes);

  const SplitSettings& settings_;
  AttachmentList& list_;
  std::string text_;
  std::unique_ptr<PartFile> file_;
  std::size_t lines_ = 0;  // that have ended
  bool separate_ = false;
};

}  // namespace quillon
