#include "codec/TextPart.h"

#include <algorithm>

#include "codec/clsMIMEPart.h"

namespace quillon {

namespace {

constexpr const char* kDefaultName = "ATTACH.UUE";
constexpr std::size_t kBlock = 48U << 10U;

bool IsBase64Line(std::string_view line) {
  return !line.empty() && std::all_of(line.begin(), line.end(), [](char c) {
    return Base64Value(static_cast<std::uint8_t>(c)) < 64 || c == '=';
  });
}

bool IsBlankLine(std::string_view line) {
  return line.find_first_not_of(' ') == std::string_view::npos;
}

}  // namespace

TextPart::TextPart(FileSystem& files, const SplitSettings& settings, AttachmentList& list,
                   BodyCollector& body, std::int16_t encoding)
    : files_(files),
      settings_(settings),
      list_(list),
      text_(encoding == mime_encoding::kUuencode ? mime_encoding::kNone : encoding, body),
      mayHoldFiles_(encoding == mime_encoding::kNone || encoding == mime_encoding::kUuencode) {}

void TextPart::Line(std::string_view line, bool endsLine) {
  const bool whole = atLineStart_ && endsLine;
  atLineStart_ = endsLine;
  if (mayHoldFiles_ && whole && TakesLine(line)) return;
  if (inFile_) CloseFile();
  if (begin_) {
    begin_.reset();
    text_.Line(beginLine_, true);
  }
  text_.Line(line, endsLine);
}

bool TextPart::TakesLine(std::string_view line) {
  if (inFile_) return TakesDataLine(line);
  if (begin_ && LooksLikeData(line)) {
    OpenFile();
    return TakesDataLine(line);
  }
  if (!begin_ && line.starts_with("begin") && !list_.IsFull() && (begin_ = ParseUuBegin(line))) {
    beginLine_ = line;
    return true;
  }
  return false;
}

bool TextPart::LooksLikeData(std::string_view line) const {
  return begin_->base64 ? IsBase64Line(line) : LooksLikeUuData(line);
}

bool TextPart::TakesDataLine(std::string_view line) {
  if (begin_->base64) {
    if (!IsBase64Line(line)) return false;
    if (line == "====") {
      CloseFile();
      return true;
    }
    data_.append(line).append("\r\n");
  } else if (IsUuEnd(line)) {
    CloseFile();
    return true;
  } else {
    if (dataEnded_ || !(IsBlankLine(line) || LooksLikeUuData(line))) return false;
    dataEnded_ = IsBlankLine(line) || !DecodeUuLine(line, data_);
  }
  if (data_.size() >= kBlock) FlushData();
  return true;
}

void TextPart::OpenFile() {
  inFile_ = true;
  dataEnded_ = false;
  if (settings_.suppressAttachments) return;
  const auto& name = begin_->fileName;
  file_ = std::make_unique<PartFile>(files_, settings_, name.empty() ? kDefaultName : name, list_);
}

void TextPart::FlushData() {
  if (begin_->base64) {
    std::string bytes(Base64Decoder::Capacity(data_.size()), '\0');
    const std::span text(reinterpret_cast<const std::uint8_t*>(data_.data()), data_.size());
    bytes.resize(base64_.Decode(text, reinterpret_cast<std::uint8_t*>(bytes.data())));
    data_ = std::move(bytes);
  }
  if (file_ != nullptr) file_->Append(data_);
  data_.clear();
}

void TextPart::CloseFile() {
  FlushData();
  if (begin_->base64 && file_ != nullptr) {
    std::string rest(3, '\0');
    rest.resize(base64_.Finish(reinterpret_cast<std::uint8_t*>(rest.data())));
    file_->Append(rest);
  }
  file_.reset();
  begin_.reset();
  inFile_ = false;
}

void TextPart::Finish(ContentEnd end) {
  if (inFile_) {
    CloseFile();
  } else if (begin_) {
    text_.Line(beginLine_, true);
  }
  text_.Finish(end);
}

}  // namespace quillon
