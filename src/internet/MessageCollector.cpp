#include "internet/MessageCollector.h"

#include <utility>

namespace quillon {

namespace {

constexpr std::int32_t kGoOn = 0;
constexpr std::int32_t kOverflow = 30;

// What comes after that much header is left out.
constexpr std::size_t kMostHeaderBytes = 1024 * 1024;

}  // namespace

std::int32_t MessageCollector::OnMessageLine(std::string_view text, bool complete) {
  const bool lineStart = !std::exchange(inLongLine_, !complete);
  if (inHeader_) {
    if (lineStart && complete && text.empty()) {
      inHeader_ = false;
    } else if (lineStart) {
      OnHeaderLine(text);
    }
    return kGoOn;
  }
  if (options_.maximumBodyLines > 0 && bodyLines_ >= options_.maximumBodyLines) return kGoOn;
  if (text_.size() + text.size() > kMostTextBytes) return kOverflow;
  text_.append(text);
  if (complete) {
    text_.append("\r\n");
    ++bodyLines_;
  }
  return kGoOn;
}

// Of a header line longer than the socket's buffer the begin is kept.
void MessageCollector::OnHeaderLine(std::string_view text) {
  if (rawHeaders_.size() + text.size() > kMostHeaderBytes) return;
  rawHeaders_.append(text).append("\r\n");
  reader_.Store(fields_, 0, text, options_.dateFormat);
}

std::string MessageCollector::TakeText() {
  if (!options_.headersInMessage) return std::move(text_);
  return rawHeaders_ + "\r\n" + text_;
}

}  // namespace quillon
