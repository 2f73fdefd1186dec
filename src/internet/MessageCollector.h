// Takes a message as it arrives: notes the fields of its header, which stay bytes, and lets the
// rest be split into text and files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "codec/HeaderField.h"
#include "codec/HeaderTable.h"
#include "codec/MessageSplitter.h"
#include "internet/PopSession.h"

namespace quillon {

class MessageCollector final : public MessageSink {
 public:
  // `mostBytes`: how long the message may be. Asked for once, and by one of more than 1 MiB only.
  MessageCollector(FileSystem& files, const TextReader& reader, const SplitSettings& split,
                   std::string dateFormat, std::function<std::uint64_t()> mostBytes)
      : dateFormat_(std::move(dateFormat)),
        mostBytes_(std::move(mostBytes)),
        splitter_(files, reader, split),
        fields_(1) {}

  // The result is 26 when a file of the message cannot be written, 30 when it is too long, or its
  // header would take too much memory; no file of it is left then.
  std::int32_t OnMessageLine(std::string_view text, bool complete) override;
  bool InAttachment() const override { return splitter_.InAttachment(); }
  std::int32_t OnMessageEnd() override;

  const HeaderRecord& Fields() const noexcept { return fields_[0]; }
  const std::string& RawHeaders() const noexcept { return rawHeaders_; }
  SplitMessage& Message() noexcept { return message_; }

 private:
  void OnHeaderPiece(std::string_view text, bool complete);
  bool HeaderFits() const;
  bool IsTooLong();

  const std::string dateFormat_;
  const std::function<std::uint64_t()> mostBytes_;
  MessageSplitter splitter_;
  SplitMessage message_;
  HeaderTable fields_;  // one record
  HeaderLineReader reader_;
  std::string rawHeaders_;
  std::size_t lineStart_ = 0;  // of the last header line, in rawHeaders_
  std::uint64_t bytes_ = 0;
  std::uint64_t allowed_ = 1024U * 1024;
  bool asked_ = false;  // whether that is what may be
  bool inHeader_ = true;
};

}  // namespace quillon
