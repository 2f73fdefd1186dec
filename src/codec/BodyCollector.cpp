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
  if (file_ == nullptr && text_.size() + bytes.size() > settings_.maximumBodyBytes) {
    file_ = std::make_unique<PartFile>(files_, settings_, kFileName, list_, true);
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
