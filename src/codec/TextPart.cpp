#include "codec/TextPart.h"

#include <algorithm>
#include <span>
#include <utility>

#include "codec/UuLines.h"
#include "codec/clsMIMEPart.h"

namespace quillon {

namespace {

constexpr const char* kDefaultName = "ATTACH.UUE";
constexpr std::size_t kBlock = 48U << 10U;
constexpr std::size_t kMostHeldBytes = 64U << 10U;

bool IsBase64Line(std::string_view line) {
  return !line.empty() && std::all_of(line.begin(), line.end(), [](char c) {
    return Base64Value(static_cast<std::uint8_t>(c)) < 64 || c == '=';
  });
}

bool IsBlankLine(std::string_view line) {
  return line.find_first_not_of(' ') == std::string_view::npos;
}

}  // namespace

TextPart::TextPart(const SplitSettings& settings, AttachmentList& list, ByteSink& rest,
                   std::int16_t encoding, UuSearch search, std::string firstName)
    : settings_(settings),
      list_(list),
      text_(encoding, rest),
      search_(search),
      firstName_(std::move(firstName)) {}

void TextPart::Line(std::string_view line, bool endsLine) {
  const bool whole = std::exchange(atLineStart_, endsLine) && endsLine;
  if (begin_) {
    if (whole && TakesLine(line)) return;
    LeaveFile();
  }
  if (whole && BeginsFile(line)) return;
  TextLine(line, endsLine);
}

bool TextPart::BeginsFile(std::string_view line) {
  if (search_ == UuSearch::Nowhere || !line.starts_with("begin") || list_.IsFull()) return false;
  begin_ = ParseUuBegin(line);
  if (begin_) beginLine_ = line;
  return begin_.has_value();
}

bool TextPart::TakesLine(std::string_view line) {
  if (begin_->base64) return TakesBase64Line(line);
  if (IsUuEnd(line)) return TakesUuEnd();
  if (dataEnded_) return false;
  if (IsBlankLine(line)) {
    dataEnded_ = true;
    return Hold(line);
  }
  if (!LooksLikeUuData(line)) return false;
  if (!IsWholeUuLine(line)) return Hold(line);
  TakeHeld();
  dataEnded_ = static_cast<std::uint8_t>(line[0]) == kUuEnd;
  Decode(line);
  return true;
}

// Behind nothing but short lines "end" is a word, unless the empty line of a file stands before it.
bool TextPart::TakesUuEnd() {
  if (!inFile_ && !dataEnded_) return false;
  TakeHeld();
  CloseFile();
  return true;
}

bool TextPart::TakesBase64Line(std::string_view line) {
  constexpr std::size_t kGroup = 4;
  if (!IsBase64Line(line)) return false;
  if (line.size() % kGroup != 0) return Hold(line);
  TakeHeld();
  if (line == "====") {
    CloseFile();
  } else {
    Decode(line);
  }
  return true;
}

// False when there are too many.
bool TextPart::Hold(std::string_view line) {
  heldBytes_ += line.size();
  if (heldBytes_ > kMostHeldBytes) return false;
  held_.emplace_back(line);
  return true;
}

void TextPart::TakeHeld() {
  if (!inFile_) OpenFile();
  for (const auto& line : std::exchange(held_, {})) Decode(line);
  heldBytes_ = 0;
}

void TextPart::Decode(std::string_view line) {
  if (begin_->base64) {
    data_.append(line).append("\r\n");
  } else {
    DecodeUuLine(line, data_);
  }
  if (data_.size() >= kBlock) FlushData();
}

void TextPart::OpenFile() {
  inFile_ = true;
  const bool first = !std::exchange(hasFiles_, true);
  if (settings_.suppressAttachments) return;
  auto name = first && !firstName_.empty() ? firstName_ : begin_->fileName;
  if (name.empty()) name = kDefaultName;
  file_ = std::make_unique<PartFile>(settings_, name, list_);
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
  dataEnded_ = false;
}

// The file breaks off, or never was one: what it does not take is text.
void TextPart::LeaveFile() {
  if (inFile_) {
    CloseFile();
  } else {
    begin_.reset();
    dataEnded_ = false;
    TextLine(beginLine_, true);
  }
  for (const auto& line : std::exchange(held_, {})) TextLine(line, true);
  heldBytes_ = 0;
}

void TextPart::TextLine(std::string_view line, bool endsLine) {
  if (search_ == UuSearch::AtStart && !hasFiles_ && !IsBlankLine(line)) {
    search_ = UuSearch::Nowhere;
  }
  text_.Line(line, endsLine);
}

void TextPart::Finish(ContentEnd end) {
  if (begin_) LeaveFile();
  text_.Finish(end);
}

}  // namespace quillon
