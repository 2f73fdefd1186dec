// Collects a received message: its header, and its text as it stands behind the header. Everything
// is bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "codec/HeaderField.h"
#include "internet/PopSession.h"
#include "mail/HeaderTable.h"

namespace quillon {

struct MessageOptions {
  std::int32_t maximumBodyLines = 0;  // 0: all
  bool headersInMessage = false;      // the text begins with the header lines and an empty line
  std::string dateFormat;
};

class MessageCollector final : public MessageSink {
 public:
  // Beyond this much text the result is 30.
  static constexpr std::size_t kMostTextBytes = 64U * 1024 * 1024;

  explicit MessageCollector(MessageOptions options) : options_(std::move(options)), fields_(1) {}

  std::int32_t OnMessageLine(std::string_view text, bool complete) override;

  const HeaderRecord& Fields() const noexcept { return fields_[0]; }
  const std::string& RawHeaders() const noexcept { return rawHeaders_; }
  std::string TakeText();

 private:
  void OnHeaderLine(std::string_view text);

  MessageOptions options_;
  HeaderTable fields_;  // one record
  HeaderLineReader reader_;
  std::string rawHeaders_;
  std::string text_;
  std::int32_t bodyLines_ = 0;
  bool inHeader_ = true;
  bool inLongLine_ = false;
};

}  // namespace quillon
