// Files in memory, so that what works on files can be fuzzed at speed.
#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "ports/FileSystem.h"

namespace quillon::fuzz {

class MemoryFiles final : public FileSystem {
 public:
  using Bytes = std::vector<uint8_t>;

  std::map<std::string, Bytes> files;
  std::set<std::string> directories;  // that were made

  std::unique_ptr<File> Open(const std::string& path, OpenMode mode) override {
    const bool exists = FileExists(path);
    if (mode == OpenMode::kRead ? !exists : mode == OpenMode::kCreateNew && exists) return nullptr;
    Bytes& bytes = files[path];
    if (mode == OpenMode::kCreate) bytes.clear();
    return std::make_unique<MemoryFile>(bytes, mode == OpenMode::kAppend ? bytes.size() : 0);
  }
  bool FileExists(const std::string& path) override { return files.contains(path); }
  bool DirectoryExists(const std::string& path) override { return path.empty() || path == "/"; }
  bool RemoveFile(const std::string& path) override {
    files.erase(path);
    return true;
  }
  bool RenameFile(const std::string& from, const std::string& to) override {
    if (!CopyWholeFile(from, to)) return false;
    return from == to || RemoveFile(from);
  }
  bool CopyWholeFile(const std::string& from, const std::string& to) override {
    if (!FileExists(from)) return false;
    files[to] = Bytes(files[from]);
    return true;
  }
  bool MakeDirectory(const std::string& path) override { return directories.insert(path).second; }
  bool RemoveEmptyDirectory(const std::string& path) override {
    return directories.erase(path) != 0;
  }
  std::string FullPath(const std::string& path) override { return path; }
  std::string ShortPath(const std::string& path) override { return path; }
  std::string TempDirectory() override { return "/"; }
  char Separator() const override { return '/'; }

 private:
  // Valid while its file is not removed, which no code under test does with an open one.
  class MemoryFile final : public File {
   public:
    MemoryFile(Bytes& bytes, size_t position) : bytes_(bytes), position_(position) {}

    std::optional<size_t> Read(std::span<uint8_t> buffer) override {
      const size_t count = std::min(buffer.size(), bytes_.size() - position_);
      std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(position_), count, buffer.begin());
      position_ += count;
      return count;
    }
    bool Write(std::span<const uint8_t> bytes) override {
      bytes_.resize(std::max(bytes_.size(), position_ + bytes.size()));
      std::copy(bytes.begin(), bytes.end(),
                bytes_.begin() + static_cast<std::ptrdiff_t>(position_));
      position_ += bytes.size();
      return true;
    }
    bool Seek(uint64_t position) override {
      position_ = static_cast<size_t>(std::min<uint64_t>(position, bytes_.size()));
      return true;
    }
    std::optional<uint64_t> Size() override { return bytes_.size(); }
    bool Close() override { return true; }

   private:
    Bytes& bytes_;
    size_t position_;
  };
};

// A property of the code does not hold.
inline void Require(bool holds) {
  if (!holds) __builtin_trap();
}

}  // namespace quillon::fuzz
