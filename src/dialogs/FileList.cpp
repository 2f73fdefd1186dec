#include "dialogs/FileList.h"

#include <algorithm>
#include <array>

#include "core/Text.h"
#include "core/WholeFile.h"
#include "dialogs/MailForm.h"
#include "ports/FileSystem.h"

namespace quillon {

namespace {

bool IsFileName(const std::string& name) {
  constexpr std::string_view kForbidden = "\\/:*?\"<>|";
  return !name.empty() && std::none_of(name.begin(), name.end(), [&](char c) {
    return static_cast<unsigned char>(c) < ' ' || kForbidden.find(c) != std::string_view::npos;
  });
}

}  // namespace

FileList::Line FileList::LineOf(std::size_t index) const {
  const auto& [path, name] = list_[index];
  const auto file = files_.Open(path, OpenMode::kRead);
  const auto size = file != nullptr ? file->Size() : std::nullopt;
  if (size) return {name, SizeText(*size)};
  return {name, files_.FileExists(path) ? "cannot be read" : "does not exist"};
}

void FileList::Add(const std::string& path) {
  auto file = TrimmedCopy(path);
  if (file.empty()) return;
  CheckFile(files_, file);
  const bool known = std::any_of(list_.begin(), list_.end(), [&](const auto& listed) {
    return listed.path == file || (EqualsIgnoreCase(FileNameOf(listed.path), FileNameOf(file)) &&
                                   files_.SameFile(listed.path, file));
  });
  if (known) return;
  std::string name(FileNameOf(file));
  list_.push_back({std::move(file), std::move(name)});
  try {
    CheckCount(list_);
  } catch (const MailFormFailure&) {
    list_.pop_back();
    throw;
  }
}

void FileList::Remove(std::size_t index) {
  if (index < list_.size()) list_.erase(list_.begin() + static_cast<std::ptrdiff_t>(index));
}

bool FileList::Rename(std::size_t index, const std::string& name) {
  auto trimmed = TrimmedCopy(name);
  if (index >= list_.size() || !IsFileName(trimmed)) return false;
  list_[index].name = std::move(trimmed);
  return true;
}

std::string SizeText(std::uint64_t bytes) {
  constexpr std::array kUnits{"bytes", "KB", "MB", "GB", "TB"};
  constexpr std::uint64_t kStep = 1024;
  if (bytes == 1) return "1 byte";
  std::size_t unit = 0;
  std::uint64_t rest = 0;
  while (bytes >= kStep && unit + 1 < kUnits.size()) {
    rest = bytes % kStep;
    bytes /= kStep;
    ++unit;
  }
  auto text = std::to_string(bytes);
  // One digit more where it says something.
  if (unit > 0 && bytes < 10) text += "." + std::to_string(rest * 10 / kStep);
  return text + " " + kUnits[unit];
}

std::string FilesText(const std::vector<MailForm::File>& files) {
  if (files.empty()) return "No attachments";
  std::string text;
  for (const auto& file : files) {
    if (!text.empty()) text += "; ";
    text += file.name;
  }
  if (files.size() == 1) return text;
  return std::to_string(files.size()) + " files: " + text;
}

}  // namespace quillon
