#include "codec/ZipClass.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "codec/BlockIo.h"
#include "codec/zip/ZipWriter.h"

namespace quillon {
namespace {

constexpr int kCompressionFactor = 5;

}  // namespace

ZipClass::ZipClass(FileSystem& files, ZipProgress progress)
    : files_(files), progress_(std::move(progress)) {}

ShortBool ZipClass::zip() {
  uint64_t total = 0;
  return ToShortBool(!paths_.empty() && Prepare(total) && Pack(total));
}

void ZipClass::Reset() {
  paths_.clear();
  zipFile_.clear();
  password_.clear();
}

// Whether every file is there and none is the archive, before anything is written.
bool ZipClass::Prepare(uint64_t& total) {
  for (const std::string& path : paths_) {
    if (SamePath(files_, path, zipFile_)) return false;
    const std::unique_ptr<File> file = files_.Open(path, OpenMode::kRead);
    if (!file) return false;
    total += file->Size().value_or(0);
  }
  return true;
}

bool ZipClass::Pack(uint64_t total) {
  uint64_t done = 0;
  const auto onPacked = [&](size_t count) {
    done = std::min(done + count, total);  // a file can grow meanwhile
    return !progress_ || progress_(done, total);
  };
  ZipWriter writer(files_, zipFile_, kCompressionFactor, password_);
  for (const std::string& path : paths_) {
    const std::unique_ptr<File> file = files_.Open(path, OpenMode::kRead);
    if (!file || !writer.Add(*file, path, onPacked)) return false;
  }
  return writer.Finish();
}

}  // namespace quillon
