#include "internet/MessageCollector.h"

#include "internet/InternetError.h"

namespace quillon {

namespace {

constexpr std::int32_t kGoOn = 0;
constexpr std::string_view kLineEnd = "\r\n";

}  // namespace

std::int32_t MessageCollector::OnMessageLine(std::string_view text, bool complete) {
  if (!splitter_.Line(text, complete)) return internet_error::kCannotWrite;
  if (!inHeader_) return kGoOn;
  if (splitter_.InMessageHeader()) {
    OnHeaderPiece(text, complete);
  } else {
    inHeader_ = false;
    if (options_.headersInMessage) splitter_.AddText(kLineEnd);
  }
  return kGoOn;
}

void MessageCollector::OnHeaderPiece(std::string_view text, bool complete) {
  rawHeaders_ += text;
  if (!complete) return;
  reader_.Store(fields_, 0, std::string_view(rawHeaders_).substr(lineStart_), options_.dateFormat);
  rawHeaders_ += kLineEnd;
  if (options_.headersInMessage)
    splitter_.AddText(std::string_view(rawHeaders_).substr(lineStart_));
  lineStart_ = rawHeaders_.size();
}

std::int32_t MessageCollector::OnMessageEnd() {
  return splitter_.Finish(message_) ? kGoOn : internet_error::kCannotWrite;
}

}  // namespace quillon
