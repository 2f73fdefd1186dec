// Files that take everything and keep nothing, so that what is measured is the work before them.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>

#include "ports/FileSystem.h"

namespace quillon::bench {

class NullFiles final : public FileSystem {
 public:
  std::unique_ptr<File> Open(const std::string&, OpenMode) override {
    return std::make_unique<NullFile>();
  }
  bool FileExists(const std::string&) override { return false; }
  bool DirectoryExists(const std::string&) override { return false; }
  bool RemoveFile(const std::string&) override { return true; }
  bool RenameFile(const std::string&, const std::string&) override { return false; }
  bool CopyWholeFile(const std::string&, const std::string&) override { return false; }
  bool MakeDirectory(const std::string&) override { return false; }
  bool RemoveEmptyDirectory(const std::string&) override { return false; }
  std::string FullPath(const std::string& path) override { return path; }
  std::string ShortPath(const std::string& path) override { return path; }
  std::string TempDirectory() override { return {}; }
  char Separator() const override { return '/'; }

 private:
  class NullFile final : public File {
   public:
    std::optional<size_t> Read(std::span<uint8_t>) override { return 0; }
    bool Write(std::span<const uint8_t>) override { return true; }
    bool Seek(uint64_t) override { return true; }
    std::optional<uint64_t> Size() override { return 0; }
    bool Close() override { return true; }
  };
};

}  // namespace quillon::bench
