// Packs outgoing attachments into one ZIP archive: file names without their directories, deflated,
// and encrypted when there is a password. docs/zip.md describes the archive.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "core/ShortBool.h"
#include "platform/FileSystem.h"

namespace quillon {

// Told while packing how many bytes of all files are done, the same number or a larger one each
// time; false gives up.
using ZipProgress = std::function<bool(uint64_t done, uint64_t total)>;

class ZipClass {
 public:
  explicit ZipClass(FileSystem& files, ZipProgress progress = {});

  // The path of the archive, which replaces an older one.
  const std::string& zipFile() const noexcept { return zipFile_; }
  void zipFile(const std::string& path) { zipFile_ = path; }

  // Empty: no encryption. Its UTF-8 bytes are taken as they are.
  const std::string& Password() const noexcept { return password_; }
  void Password(const std::string& password) { password_ = password; }

  // Files are packed in the order added. One added twice is in the archive twice.
  void AddFile(const std::string& path) { paths_.push_back(path); }

  // False when no file was added, one of them cannot be read or is the archive itself, the archive
  // cannot be written, or the progress callback gives up: then there is no archive. What stood
  // under its name stays when a file is missing, or is the archive, from the start.
  ShortBool zip();

  // No files, no archive path, no password.
  void Reset();

 private:
  bool Prepare(uint64_t& total);
  bool Pack(uint64_t total);

  FileSystem& files_;
  const ZipProgress progress_;
  std::vector<std::string> paths_;
  std::string zipFile_;
  std::string password_;
};

}  // namespace quillon
