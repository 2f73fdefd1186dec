// Opens a "winmail.dat" into the files and the text of the message that it came with.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "codec/BodyCollector.h"
#include "codec/PartFile.h"
#include "codec/TextReader.h"
#include "codec/TnefReader.h"

namespace quillon {

class Tnef {
 public:
  // Messages within one another.
  static constexpr std::size_t kMaximumDepth = 4;

  Tnef(const TextReader& reader, const SplitSettings& settings, AttachmentList& list,
       BodyCollector& body, std::optional<std::string>& html)
      : reader_(reader), settings_(settings), list_(list), body_(body), html_(html) {}

  // Lists what the file holds. Its text becomes that of the message, unless this has one; its
  // renderings are alternatives, and its HTML that of a message without any. A message within it
  // stays a file, behind which its text and files stand. True when everything is listed, so that
  // the file itself is not needed any more.
  bool Open(File& file);

 private:
  using TextTarget = std::function<ByteSink&(const TextForm& form)>;

  bool PutText(const TnefMessage& message, const TextTarget& begin);
  bool PutRichText(const TnefMessage& message, const TextTarget& begin);
  bool PutRenderings(const TnefMessage& message, bool withText);
  bool PutHtml(const TnefMessage& message);
  bool PutTextFile(const TnefMessage& message, const std::string& name);
  bool PutAttachments(const TnefMessage& message, std::size_t depth);
  bool PutAttachment(const TnefAttachment& attachment, std::size_t depth);
  void OpenInner(const TnefAttachment& attachment, const std::string& name, std::size_t depth);
  bool PutFile(const std::string& name, FileBytes bytes);

  const TextReader reader_;
  const SplitSettings& settings_;
  AttachmentList& list_;
  BodyCollector& body_;
  std::optional<std::string>& html_;
};

}  // namespace quillon
