// Collects the text of a message: in memory up to a limit, in the file "MESSAGE.TXT" beyond it.
// What stays in memory becomes text at the end, part by part; the file holds the bytes.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "codec/ByteSink.h"
#include "codec/PartFile.h"
#include "codec/TextForm.h"
#include "codec/TextReader.h"

namespace quillon {

class BodyCollector final : public ByteSink {
 public:
  BodyCollector(const TextReader& reader, const SplitSettings& settings, AttachmentList& list)
      : reader_(reader), settings_(settings), list_(list) {}

  // What is appended from now on is another text, of that form.
  void Begin(const TextForm& form);

  void Append(std::string_view bytes) override;

  // The same of the header, before everything else; of no account for the limit of lines.
  void AddInFront(std::string_view bytes) { Put(bytes); }

  // Puts a line end between what is there and what comes.
  void SeparateFromNext();

  // Whether it is more than blanks and line ends, the header aside.
  bool HasText() const noexcept { return hasText_; }

  // The text, or the sentence that stands in its place.
  std::string Finish();

 private:
  struct Run {
    TextForm form;
    std::size_t start = 0;
    bool isHeader = false;
  };

  void AppendCounted(std::string_view bytes);
  std::string_view WithinLines(std::string_view bytes);
  void Put(std::string_view bytes);
  std::string TextOf(const Run& run, std::size_t end) const;

  const TextReader reader_;
  const SplitSettings& settings_;
  AttachmentList& list_;
  std::string bytes_;
  std::vector<Run> runs_;  // of them
  Run next_{{}, 0, true};  // begins with what comes
  bool begins_ = true;
  std::unique_ptr<PartFile> file_;
  std::size_t lines_ = 0;  // that have ended
  bool separate_ = false;
  bool hasText_ = false;
};

}  // namespace quillon
