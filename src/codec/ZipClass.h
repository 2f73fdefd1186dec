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
  static constexpr int kDefaultFactor = 5;

  std::string zipFile;                     // the path of the archive, which replaces an older one
  std::string Password;                    // empty: no encryption; taken as UTF-8 bytes
  int CompressionFactor = kDefaultFactor;  // from 1, fastest, to 9, smallest

  explicit ZipClass(FileSystem& files, ZipProgress progress = {});

  // Files are packed in the order added. One added twice is in the archive twice.
  void AddFile(const std::string& path) { paths_.push_back(path); }

  // False when no file was added, one of them cannot be read or is the archive itself, the archive
  // cannot be written, or the progress callback gives up: then there is no archive. What stood
  // under its name stays when a file is missing, or is the archive, from the start.
  ShortBool zip();

  // No files, no archive path, no password, the default compression.
  void Reset();

 private:
  bool Prepare(uint64_t& total);
  bool Pack(uint64_t total);

  FileSystem& files_;
  const ZipProgress progress_;
  std::vector<std::string> paths_;
};

}  // namespace quillon
