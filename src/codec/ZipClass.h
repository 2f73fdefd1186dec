// Packs outgoing attachments into one ZIP archive: file names without their directories, deflated,
// and encrypted when there is a password. docs/zip.md describes the archive.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "codec/FileEncoder.h"
#include "core/ShortBool.h"
#include "ports/FileSystem.h"

namespace quillon {

class ZipClass {
 public:
  explicit ZipClass(FileSystem& files) : files_(files) {}

  // The path of the archive, which replaces an older one.
  const std::string& zipFile() const noexcept { return zipFile_; }
  void zipFile(const std::string& path) { zipFile_ = path; }

  // Empty: no encryption. Its UTF-8 bytes are taken as they are.
  const std::string& Password() const noexcept { return password_; }
  void Password(const std::string& password) { password_ = password; }

  // Files are packed in the order added. One added twice is in the archive twice.
  void AddFile(const std::string& path) { paths_.push_back(path); }

  // False when no file was added, one of them cannot be read or is the archive itself, or the
  // archive cannot be written: then there is no archive. What stood under its name stays when a
  // file is missing, or is the archive, from the start.
  ShortBool zip() const;

  // The same in steps. What is set here meanwhile counts for the next archive.
  std::unique_ptr<FileEncoder> Start() const;

  // No files, no archive path, no password.
  void Reset();

 private:
  FileSystem& files_;
  std::vector<std::string> paths_;
  std::string zipFile_;
  std::string password_;
};

}  // namespace quillon
