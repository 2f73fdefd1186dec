#include "codec/BodyCollector.h"

#include <algorithm>
#include <utility>

#include "codec/FlowedText.h"

namespace quillon {

namespace {

constexpr const char* kFileName = "MESSAGE.TXT";
constexpr const char* kTooLong = "{Message too long, appended as first attachment.}";
constexpr std::string_view kLineEnd = "\r\n";

// The library's search for what is none of a set calls a function for each character.
bool IsBlank(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char character) {
    return character == ' ' || character == '\t' || character == '\r' || character == '\n';
  });
}

}  // namespace

void BodyCollector::Begin(const TextForm& form) {
  next_ = {form, 0, false};
  begins_ = true;
}

void BodyCollector::Append(std::string_view bytes) {
  if (bytes.empty()) return;
  if (std::exchange(separate_, false)) {
    const auto form = next_.form;
    Begin({});
    AppendCounted(kLineEnd);
    Begin(form);
  }
  AppendCounted(bytes);
}

void BodyCollector::AppendCounted(std::string_view bytes) {
  hasText_ = hasText_ || !IsBlank(bytes);
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
  if (file_ == nullptr && bytes_.size() + bytes.size() > settings_.maximumBodyBytes) {
    file_ = std::make_unique<PartFile>(settings_, kFileName, list_, true);
    file_->Append(bytes_);
    bytes_ = std::string();
  }
  if (file_ != nullptr) {
    file_->Append(bytes);
    return;
  }
  if (std::exchange(begins_, false)) {
    next_.start = bytes_.size();
    runs_.push_back(next_);
  }
  bytes_ += bytes;
}

void BodyCollector::SeparateFromNext() {
  separate_ = file_ != nullptr || (!bytes_.empty() && !bytes_.ends_with(kLineEnd));
}

std::string BodyCollector::TextOf(const Run& run, std::size_t end) const {
  const auto bytes = std::string_view(bytes_).substr(run.start, end - run.start);
  if (run.isHeader) return settings_.rawHeaders ? reader_.Ansi(bytes) : reader_.Unnamed(bytes);
  auto text = reader_.Whole(bytes, run.form.characterSet);
  return run.form.flowed ? JoinFlowedText(text, run.form.deletesBlanks) : text;
}

std::string BodyCollector::Finish() {
  if (file_ != nullptr) {
    file_->Close();
    return kTooLong;
  }
  const bool isText = runs_.size() == 1 && !runs_[0].isHeader && !runs_[0].form.flowed &&
                      TextReader::IsWholeText(bytes_, runs_[0].form.characterSet);
  if (isText) return std::move(bytes_);
  std::string text;
  for (std::size_t i = 0; i < runs_.size(); ++i) {
    text += TextOf(runs_[i], i + 1 < runs_.size() ? runs_[i + 1].start : bytes_.size());
  }
  return text;
}

}  // namespace quillon
