// The real files, with a disk that fills up and files that cannot be read to their end.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ports/FileSystem.h"

namespace quillon::testing {

class FaultyFileSystem final : public FileSystem {
 public:
  explicit FaultyFileSystem(FileSystem& real) : real_(real) {}

  // How many more bytes, over all files, can be written or read before every such call fails.
  uint64_t writeBudget = std::numeric_limits<uint64_t>::max();
  uint64_t readBudget = std::numeric_limits<uint64_t>::max();
  bool closeFails = false;
  // What other users can write, beside what they really can.
  std::string openToOthers;
  // Calls of Read and Write since the start.
  uint64_t calls = 0;

  std::unique_ptr<File> Open(const std::string& path, OpenMode mode) override {
    auto file = real_.Open(path, mode);
    if (!file) return nullptr;
    return std::make_unique<FaultyFile>(*this, std::move(file));
  }
  bool FileExists(const std::string& path) override { return real_.FileExists(path); }
  bool DirectoryExists(const std::string& path) override { return real_.DirectoryExists(path); }
  bool RemoveFile(const std::string& path) override { return real_.RemoveFile(path); }
  bool RenameFile(const std::string& from, const std::string& to) override {
    return real_.RenameFile(from, to);
  }
  bool RenameToNew(const std::string& from, const std::string& to) override {
    return real_.RenameToNew(from, to);
  }
  bool CopyWholeFile(const std::string& from, const std::string& to) override {
    return real_.CopyWholeFile(from, to);
  }
  bool MakeDirectory(const std::string& path) override { return real_.MakeDirectory(path); }
  bool RemoveEmptyDirectory(const std::string& path) override {
    return real_.RemoveEmptyDirectory(path);
  }
  std::vector<DirectoryEntry> List(const std::string& directory,
                                   const std::string& prefix) override {
    return real_.List(directory, prefix);
  }
  bool OthersCanWrite(const std::string& path) override {
    return path == openToOthers || real_.OthersCanWrite(path);
  }
  bool SameFile(const std::string& one, const std::string& other) override {
    return real_.SameFile(one, other);
  }
  std::string FullPath(const std::string& path) override { return real_.FullPath(path); }
  std::string ShortPath(const std::string& path) override { return real_.ShortPath(path); }
  std::string TempDirectory() override { return real_.TempDirectory(); }
  char Separator() const override { return real_.Separator(); }

 private:
  static size_t Within(size_t wanted, uint64_t budget) {
    return budget < wanted ? static_cast<size_t>(budget) : wanted;
  }

  class FaultyFile final : public File {
   public:
    FaultyFile(FaultyFileSystem& owner, std::unique_ptr<File> file)
        : owner_(owner), file_(std::move(file)) {}

    std::optional<size_t> Read(std::span<uint8_t> buffer) override {
      ++owner_.calls;
      if (owner_.readBudget == 0) return std::nullopt;
      const auto count = file_->Read(buffer.first(Within(buffer.size(), owner_.readBudget)));
      if (count) owner_.readBudget -= *count;
      return count;
    }

    bool Write(std::span<const uint8_t> bytes) override {
      ++owner_.calls;
      const size_t fitting = Within(bytes.size(), owner_.writeBudget);
      owner_.writeBudget -= fitting;
      return file_->Write(bytes.first(fitting)) && fitting == bytes.size();
    }

    bool Seek(uint64_t position) override { return file_->Seek(position); }
    bool Flush() override { return file_->Flush(); }
    std::optional<uint64_t> Size() override { return file_->Size(); }
    std::optional<LocalTime> ModificationTime() override { return file_->ModificationTime(); }
    bool Close() override { return file_->Close() && !owner_.closeFails; }

   private:
    FaultyFileSystem& owner_;
    std::unique_ptr<File> file_;
  };

  FileSystem& real_;
};

}  // namespace quillon::testing
