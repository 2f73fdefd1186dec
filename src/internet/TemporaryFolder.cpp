#include "internet/TemporaryFolder.h"

#include <utility>

#include "codec/FileName.h"
#include "core/WholeFile.h"

namespace quillon {

namespace {

constexpr int kTries = 100;

}  // namespace

TemporaryFolder::TemporaryFolder(FileSystem& files, std::string parent, bool keep)
    : files_(files), parent_(std::move(parent)), keep_(keep) {}

TemporaryFolder::~TemporaryFolder() {
  if (keep_ || path_.empty()) return;
  for (const auto& path : paths_) files_.RemoveFile(path);
  path_.pop_back();
  files_.RemoveEmptyDirectory(path_);
}

std::string TemporaryFolder::NewFile(std::string_view extension) {
  if (path_.empty() && !Make()) return {};
  auto path = path_ + std::to_string(paths_.size() + 1) + std::string(extension);
  paths_.push_back(path);
  return path;
}

// A name that nobody can foresee and that is not there, so that the directory is nobody else's.
bool TemporaryFolder::Make() {
  if (parent_.empty()) parent_ = files_.TempDirectory();
  const auto prefix = WithSeparator(files_, parent_) + "QUILLON.";
  for (int tried = 0; tried < kTries; ++tried) {
    const auto path = prefix + RandomLetters() + RandomLetters() + RandomLetters();
    if (files_.DirectoryExists(path) || files_.FileExists(path)) continue;
    if (!files_.MakeDirectory(path)) return false;
    path_ = path + files_.Separator();
    return true;
  }
  return false;
}

}  // namespace quillon
