#include "codec/BodyCollector.h"

#include <utility>

namespace quillon {

namespace {

constexpr const char* kFileName = "MESSAGE.TXT";
constexpr const char* kTooLong = "{Message too long, appended as first attachment.}";
constexpr std::string_view kLineEnd = "\r\n";

}  // namespace

void BodyCollector::Append(std::string_view bytes) {
  if (bytes.empty()) return;
  if (std::exchange(separate_, false)) Append(kLineEnd);
  Put(settings_.maximumBodyLines == 0 ? bytes : WithinLines(bytes));
}

// What there is of the bytes before the last line that counts has ended.
std::string_view BodyCollector::WithinLines(std::string_view bytes) {
  std::size_t size = 0;
  while (lines_ < settings_.maximumBodyLines && size < bytes.size()) {
    const auto end = bytes.find('\n', size);
    if (end == std::string_view::npos) return bytes;
    size = end + 1;
    ++lines_;
  }
  return bytes.substr(0, size);
}

void BodyCollector::Put(std::string_view bytes) {
  if (bytes.empty()) return;
  if (file_ == nullptr && text_.size() + bytes.size() > settings_.maximumBodyBytes) {
    file_ = std::make_unique<PartFile>(settings_, kFileName, list_, true);
    file_->Append(text_);
    text_ = std::string();
  }
  if (file_ != nullptr) {
    file_->Append(bytes);
  } else {
    text_ += bytes;
  }
}

void BodyCollector::SeparateFromNext() {
  separate_ = file_ != nullptr || (!text_.empty() && !text_.ends_with(kLineEnd));
}

std::string BodyCollector::Finish() {
  if (file_ == nullptr) return std::move(text_);
  file_->Close();
  return kTooLong;
}

}  // namespace quillon
