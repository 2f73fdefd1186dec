#include "mail/TemporaryFolder.h"

#include <utility>

#include "codec/FileName.h"
#include "core/WholeFile.h"

namespace quillon {

namespace {

constexpr int kTries = 100;
constexpr const char* kPrefix = "QUILLON.";
constexpr const char* kInUse = "IN.USE";
constexpr std::string_view kDirectoryExtension = ".dir";

// A number, and what kind of file it is.
bool IsFileName(std::string_view name) {
  const auto digits = name.find_first_not_of("0123456789");
  return digits != 0 && digits != std::string_view::npos && name[digits] == '.';
}

// The directory of a named file, with what is in it.
void RemoveDirectory(FileSystem& files, const std::string& directory) {
  for (const auto& entry : files.List(WithSeparator(files, directory), {})) {
    if (!entry.isDirectory) files.RemoveFile(WithSeparator(files, directory) + entry.name);
  }
  files.RemoveEmptyDirectory(directory);
}

// `folder` has a separator at its end.
void RemoveIfAbandoned(FileSystem& files, const std::string& folder) {
  if (!files.FileExists(folder + kInUse)) return;
  auto inUse = files.Open(folder + kInUse, OpenMode::kOwn);
  if (!inUse) return;
  for (const auto& entry : files.List(folder, {})) {
    if (!IsFileName(entry.name)) continue;
    if (entry.isDirectory) {
      RemoveDirectory(files, folder + entry.name);
    } else {
      files.RemoveFile(folder + entry.name);
    }
  }
  inUse.reset();
  files.RemoveFile(folder + kInUse);
  files.RemoveEmptyDirectory(folder.substr(0, folder.size() - 1));
}

}  // namespace

TemporaryFolder::TemporaryFolder(FileSystem& files, std::string parent, bool keep)
    : files_(files), parent_(std::move(parent)), keep_(keep) {}

TemporaryFolder::~TemporaryFolder() {
  if (keep_ || path_.empty()) return;
  for (const auto& path : paths_) files_.RemoveFile(path);
  for (const auto& directory : directories_) files_.RemoveEmptyDirectory(directory);
  inUse_.reset();
  files_.RemoveFile(path_ + kInUse);
  path_.pop_back();
  files_.RemoveEmptyDirectory(path_);
}

std::string TemporaryFolder::NewFile(std::string_view extension) {
  if (path_.empty() && !Make()) return {};
  paths_.push_back(NextPath(extension));
  return paths_.back();
}

std::string TemporaryFolder::NewNamedFile(std::string_view name) {
  if (path_.empty() && !Make()) return {};
  auto directory = NextPath(kDirectoryExtension);
  if (!files_.MakeDirectory(directory)) return {};
  paths_.push_back(WithSeparator(files_, directory) + std::string(name));
  directories_.push_back(std::move(directory));
  return paths_.back();
}

std::string TemporaryFolder::NextPath(std::string_view extension) {
  return path_ + std::to_string(++made_) + std::string(extension);
}

// A name that nobody can foresee and that is not there, so that the directory is nobody else's.
bool TemporaryFolder::Make() {
  if (parent_.empty()) parent_ = files_.TempDirectory();
  const auto prefix = WithSeparator(files_, parent_) + kPrefix;
  for (int tried = 0; tried < kTries; ++tried) {
    const auto path = prefix + RandomLetters() + RandomLetters() + RandomLetters();
    if (files_.DirectoryExists(path) || files_.FileExists(path)) continue;
    if (!files_.MakeDirectory(path)) return false;
    path_ = path + files_.Separator();
    if (!keep_) inUse_ = files_.Open(path_ + kInUse, OpenMode::kOwn);
    return true;
  }
  return false;
}

void RemoveAbandonedFolders(FileSystem& files, const std::string& parent) {
  const auto place = WithSeparator(files, parent);
  for (const auto& entry : files.List(place, kPrefix)) {
    if (entry.isDirectory) RemoveIfAbandoned(files, place + entry.name + files.Separator());
  }
}

}  // namespace quillon
