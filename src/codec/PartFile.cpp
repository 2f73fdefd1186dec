#include "codec/PartFile.h"

#include <span>
#include <utility>

#include "codec/FileName.h"
#include "core/Utf8.h"
#include "core/WholeFile.h"
#include "ports/FileSystem.h"

namespace quillon {

namespace {

// More than any system takes; ten thousand names of a message are kept.
constexpr std::size_t kMostDisplayName = 1000;

// What a sender calls a file, for the eye: without the directories and control characters it may
// come with.
std::string DisplayName(std::string_view name) {
  auto rest = FileNameOf(name);
  std::string shown;
  while (!rest.empty() && shown.size() < kMostDisplayName) {
    const auto character = TakeUtf8(rest);
    if (character >= U' ' && character != 127) AppendUtf8(shown, character);
  }
  return shown;
}

}  // namespace

AttachmentList::~AttachmentList() {
  for (const auto& path : paths_) files_.RemoveFile(path);
}

std::unique_ptr<File> AttachmentList::NewFile(const SplitSettings& settings, std::string_view name,
                                              std::string& path, bool first, PartLabel label) {
  auto created = CreateAttachmentFile(files_, settings.directory, name, settings.returnShortPaths,
                                      RandomLetters);
  if (created.file == nullptr) {
    Fail();
    return nullptr;
  }
  path = created.path;
  paths_.insert(first ? paths_.begin() : paths_.end(), std::move(created.path));
  const auto place = first ? attachments_.begin() : attachments_.end();
  attachments_.insert(place, {std::move(created.listedPath), DisplayName(name), std::move(label)});
  return std::move(created.file);
}

std::unique_ptr<File> AttachmentList::Read(std::size_t index) {
  return files_.Open(paths_[index], OpenMode::kRead);
}

void AttachmentList::Remove(std::size_t index) {
  const auto offset = static_cast<std::ptrdiff_t>(index);
  files_.RemoveFile(paths_[index]);
  paths_.erase(paths_.begin() + offset);
  attachments_.erase(attachments_.begin() + offset);
}

std::vector<Attachment> AttachmentList::Keep() {
  paths_.clear();
  return std::exchange(attachments_, {});
}

PartFile::PartFile(const SplitSettings& settings, std::string_view name, AttachmentList& list,
                   bool first, const PartLabel& label)
    : list_(list) {
  std::string path;
  file_ = list_.NewFile(settings, name, path, first, label);
}

PartFile::~PartFile() {
  Close();
}

void PartFile::Append(std::string_view bytes) {
  if (file_ == nullptr) return;
  if (!file_->Write({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()})) {
    list_.Fail();
  }
}

void PartFile::Close() {
  if (file_ != nullptr && !file_->Close()) list_.Fail();
  file_.reset();
}

}  // namespace quillon
