#include "codec/FilePart.h"

#include <utility>

namespace quillon {

namespace {

constexpr const char* kNameOfText = "NONAME.TXT";

bool IsBlank(std::string_view bytes) {
  return bytes.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

}  // namespace

FilePart::FilePart(const SplitSettings& settings, AttachmentList& list, std::string name,
                   const std::string& ownName, std::int16_t encoding, UuSearch search,
                   PartLabel label)
    : settings_(settings),
      list_(list),
      name_(std::move(name)),
      label_(std::move(label)),
      content_(settings, list, *this, encoding, search, ownName) {}

void FilePart::Append(std::string_view bytes) {
  if (file_ == nullptr) {
    if (content_.HasFiles() && IsBlank(bytes)) return;
    Open();
  }
  file_->Append(bytes);
  if (copy_ != nullptr) copy_->Append(bytes);
}

void FilePart::Open() {
  file_ = content_.HasFiles() ? std::make_unique<PartFile>(settings_, kNameOfText, list_)
                              : std::make_unique<PartFile>(settings_, name_, list_, false, label_);
}

void FilePart::Finish(ContentEnd end) {
  content_.Finish(end);
  if (file_ == nullptr && !content_.HasFiles()) Open();
  if (file_ != nullptr) file_->Close();
}

}  // namespace quillon
