// FileSystem over the POSIX calls.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "core/WholeFile.h"
#include "platform/Platform.h"
#include "platform/posix/PosixLocalTime.h"
#include "ports/FileSystem.h"

namespace quillon {
namespace {

class PosixFile final : public File {
 public:
  explicit PosixFile(int descriptor) : descriptor_(descriptor) {}
  PosixFile(const PosixFile&) = delete;
  PosixFile& operator=(const PosixFile&) = delete;
  ~PosixFile() override { PosixFile::Close(); }

  std::optional<size_t> Read(std::span<uint8_t> buffer) override {
    for (;;) {
      const ssize_t count = ::read(descriptor_, buffer.data(), buffer.size());
      if (count >= 0) return static_cast<size_t>(count);
      if (errno != EINTR) return std::nullopt;
    }
  }

  bool Write(std::span<const uint8_t> bytes) override {
    while (!bytes.empty()) {
      const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
      if (count < 0) {
        if (errno == EINTR) continue;
        return false;
      }
      bytes = bytes.subspan(static_cast<size_t>(count));
    }
    return descriptor_ >= 0;
  }

  bool Seek(uint64_t position) override {
    return ::lseek(descriptor_, static_cast<off_t>(position), SEEK_SET) >= 0;
  }

  bool Flush() override { return ::fsync(descriptor_) == 0; }

  std::optional<uint64_t> Size() override {
    struct stat info {};
    if (::fstat(descriptor_, &info) != 0) return std::nullopt;
    return static_cast<uint64_t>(info.st_size);
  }

  std::optional<LocalTime> ModificationTime() override {
    struct stat info {};
    if (::fstat(descriptor_, &info) != 0) return std::nullopt;
    return ToLocalTime(info.st_mtime);
  }

  bool Close() override {
    if (descriptor_ < 0) return true;
    const int descriptor = descriptor_;
    descriptor_ = -1;
    return ::close(descriptor) == 0;
  }

 private:
  int descriptor_;
};

int OpenFlags(OpenMode mode) {
  switch (mode) {
    case OpenMode::kRead:
      return O_RDONLY;
    case OpenMode::kCreate:
      return O_WRONLY | O_CREAT | O_TRUNC;
    case OpenMode::kCreateNew:
      return O_WRONLY | O_CREAT | O_EXCL;
    case OpenMode::kAppend:
      return O_WRONLY | O_CREAT | O_APPEND;
    case OpenMode::kOwn:
      return O_WRONLY | O_CREAT;
  }
  return O_RDONLY;
}

// A NUL would silently cut the path that the system sees.
bool IsUsable(const std::string& path) {
  return path.find('\0') == std::string::npos;
}

std::optional<mode_t> TypeOf(const std::string& path) {
  struct stat info {};
  if (!IsUsable(path) || ::stat(path.c_str(), &info) != 0) return std::nullopt;
  return info.st_mode;
}

class PosixFileSystem final : public FileSystem {
 public:
  std::unique_ptr<File> Open(const std::string& path, OpenMode mode) override {
    if (!IsUsable(path)) return nullptr;
    const int descriptor = ::open(path.c_str(), OpenFlags(mode) | O_CLOEXEC, 0666);
    if (descriptor < 0) return nullptr;
    auto file = std::make_unique<PosixFile>(descriptor);
    struct stat info {};
    if (::fstat(descriptor, &info) != 0 || S_ISDIR(info.st_mode)) return nullptr;
    if (mode == OpenMode::kOwn && ::flock(descriptor, LOCK_EX | LOCK_NB) != 0) return nullptr;
    return file;
  }

  bool FileExists(const std::string& path) override {
    const std::optional<mode_t> type = TypeOf(path);
    return type && !S_ISDIR(*type);
  }

  bool DirectoryExists(const std::string& path) override {
    const std::optional<mode_t> type = TypeOf(path);
    return type && S_ISDIR(*type);
  }

  bool RemoveFile(const std::string& path) override {
    return IsUsable(path) && (::unlink(path.c_str()) == 0 || errno == ENOENT);
  }

  bool RenameFile(const std::string& from, const std::string& to) override {
    return IsUsable(from) && IsUsable(to) && std::rename(from.c_str(), to.c_str()) == 0;
  }

  bool RenameToNew(const std::string& from, const std::string& to) override {
    if (!IsUsable(from) || !IsUsable(to)) return false;
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
      return true;
    }
    // Not every kind of disk knows how; a second name for the file does as well.
    return errno == EINVAL && ::link(from.c_str(), to.c_str()) == 0 && RemoveFile(from);
  }

  bool CopyWholeFile(const std::string& from, const std::string& to) override {
    if (!IsUsable(from) || !IsUsable(to)) return false;
    std::error_code error;
    if (SameFile(from, to)) return false;
    const bool copied = std::filesystem::copy_file(
        from, to, std::filesystem::copy_options::overwrite_existing, error);
    if (!copied && FileExists(from) && FileExists(to)) RemoveFile(to);
    return copied;
  }

  bool MakeDirectory(const std::string& path) override {
    return IsUsable(path) && (::mkdir(path.c_str(), 0777) == 0 || DirectoryExists(path));
  }

  bool RemoveEmptyDirectory(const std::string& path) override {
    return IsUsable(path) && ::rmdir(path.c_str()) == 0;
  }

  std::vector<DirectoryEntry> List(const std::string& directory,
                                   const std::string& prefix) override {
    std::vector<DirectoryEntry> entries;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(directory, error)) {
      auto name = entry.path().filename().string();
      if (entry.is_symlink(error) || !name.starts_with(prefix)) continue;
      entries.push_back({std::move(name), entry.is_directory(error)});
    }
    return entries;
  }

  bool OthersCanWrite(const std::string& path) override {
    struct stat info {};
    if (!IsUsable(path) || ::stat(path.c_str(), &info) != 0) return true;
    const bool ours = info.st_uid == 0 || info.st_uid == ::geteuid();
    return !ours || (info.st_mode & (S_IWGRP | S_IWOTH)) != 0;
  }

  bool SameFile(const std::string& one, const std::string& other) override {
    std::error_code error;
    return IsUsable(one) && IsUsable(other) && std::filesystem::equivalent(one, other, error);
  }

  std::string FullPath(const std::string& path) override {
    std::error_code error;
    const std::filesystem::path full = std::filesystem::absolute(path, error);
    return error ? path : full.lexically_normal().string();
  }

  std::string ShortPath(const std::string& path) override { return path; }

  std::string TempDirectory() override {
    const char* const chosen = std::getenv("TMPDIR");
    return WithSeparator(*this, chosen != nullptr && *chosen != '\0' ? chosen : "/tmp");
  }

  char Separator() const override { return '/'; }
};

}  // namespace

std::unique_ptr<FileSystem> MakeFileSystem() {
  return std::make_unique<PosixFileSystem>();
}

}  // namespace quillon
