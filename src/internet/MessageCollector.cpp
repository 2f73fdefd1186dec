#include "internet/MessageCollector.h"

#include <algorithm>
#include <utility>

#include "internet/HeldMemory.h"
#include "internet/InternetError.h"

namespace quillon {

namespace {

constexpr std::int32_t kGoOn = 0;
constexpr std::string_view kLineEnd = "\r\n";

// What the header of a message may take in memory: its lines, the texts of its fields, the lists of
// its recipients. The longest header that there may be fits, if it is an ordinary one.
constexpr std::size_t kMostHeaderMemory = 96U * 1024 * 1024;
constexpr std::size_t kRecipientMemory = 64;  // beside its text

}  // namespace

std::int32_t MessageCollector::OnMessageLine(std::string_view text, bool complete) {
  bytes_ += text.size() + kLineEnd.size();
  if (bytes_ > allowed_ && IsTooLong()) return internet_error::kOverflow;
  if (!splitter_.Line(text, complete)) return internet_error::kCannotWrite;
  if (!inHeader_) return kGoOn;
  inHeader_ = splitter_.InMessageHeader();
  if (inHeader_) {
    OnHeaderPiece(text, complete);
  } else if (!HeaderFits()) {
    return internet_error::kOverflow;
  }
  return kGoOn;
}

void MessageCollector::OnHeaderPiece(std::string_view text, bool complete) {
  rawHeaders_ += text;
  if (!complete) return;
  reader_.Store(fields_, 0, std::string_view(rawHeaders_).substr(lineStart_), dateFormat_);
  rawHeaders_ += kLineEnd;
  lineStart_ = rawHeaders_.size();
}

bool MessageCollector::IsTooLong() {
  if (!std::exchange(asked_, true)) allowed_ = mostBytes_();
  return bytes_ > allowed_;
}

bool MessageCollector::HeaderFits() const {
  const auto& fields = Fields();
  const auto recipients = std::count(fields.to.begin(), fields.to.end(), ',') +
                          std::count(fields.cc.begin(), fields.cc.end(), ',');
  const auto memory = HeldMemory(rawHeaders_) + HeldMemory(fields) +
                      static_cast<std::size_t>(recipients) * kRecipientMemory;
  return memory <= kMostHeaderMemory;
}

std::int32_t MessageCollector::OnMessageEnd() {
  if (inHeader_ && !HeaderFits()) return internet_error::kOverflow;
  return splitter_.Finish(message_) ? kGoOn : internet_error::kCannotWrite;
}

}  // namespace quillon
