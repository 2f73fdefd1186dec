// FileSystem over the Windows calls.
#include <windows.h>
#include <algorithm>
#include <utility>

#include "core/WholeFile.h"
#include "platform/Platform.h"
#include "platform/win32/FileRights.h"
#include "platform/win32/WideText.h"
#include "platform/win32/Win32LocalTime.h"
#include "ports/FileSystem.h"

namespace quillon {
namespace {

// Directories get a shorter limit than MAX_PATH (room for an 8.3 name), so this one serves both.
constexpr size_t kPlainPathLimit = MAX_PATH - 13;
constexpr DWORD kMostBytesPerCall = 1U << 30;

std::wstring FullWidePath(const std::wstring& path) {
  std::wstring full(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length =
        GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (length == 0) return path;
    const bool fits = length < full.size();
    full.resize(length);
    if (fits) return full;
  }
}

// The path as the system takes it; long ones get the prefix that lifts the limit. Empty when no
// file can have that path: a NUL would silently cut it.
std::wstring SystemPath(const std::string& path) {
  if (path.find('\0') != std::string::npos) return {};
  std::wstring wide = WideFromUtf8(path);
  if (wide.size() < kPlainPathLimit || wide.starts_with(L"\\\\?\\")) return wide;
  const std::wstring full = FullWidePath(wide);
  return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}

class Win32File final : public File {
 public:
  explicit Win32File(HANDLE handle) : handle_(handle) {}
  Win32File(const Win32File&) = delete;
  Win32File& operator=(const Win32File&) = delete;
  ~Win32File() override { Win32File::Close(); }

  std::optional<size_t> Read(std::span<uint8_t> buffer) override {
    const DWORD wanted = static_cast<DWORD>(std::min<size_t>(buffer.size(), kMostBytesPerCall));
    DWORD count = 0;
    if (ReadFile(handle_, buffer.data(), wanted, &count, nullptr) != FALSE) return count;
    if (GetLastError() == ERROR_BROKEN_PIPE) return 0;
    return std::nullopt;
  }

  bool Write(std::span<const uint8_t> bytes) override {
    while (!bytes.empty()) {
      const DWORD wanted = static_cast<DWORD>(std::min<size_t>(bytes.size(), kMostBytesPerCall));
      DWORD count = 0;
      if (WriteFile(handle_, bytes.data(), wanted, &count, nullptr) == FALSE || count == 0)
        return false;
      bytes = bytes.subspan(count);
    }
    return handle_ != INVALID_HANDLE_VALUE;
  }

  bool Seek(uint64_t position) override {
    LARGE_INTEGER where;
    where.QuadPart = static_cast<LONGLONG>(position);
    return SetFilePointerEx(handle_, where, nullptr, FILE_BEGIN) != 0;
  }

  bool Flush() override { return FlushFileBuffers(handle_) != FALSE; }

  std::optional<uint64_t> Size() override {
    LARGE_INTEGER size;
    if (GetFileSizeEx(handle_, &size) == FALSE) return std::nullopt;
    return static_cast<uint64_t>(size.QuadPart);
  }

  std::optional<LocalTime> ModificationTime() override {
    FILETIME written{};
    SYSTEMTIME utc{};
    if (GetFileTime(handle_, nullptr, nullptr, &written) == FALSE ||
        FileTimeToSystemTime(&written, &utc) == FALSE)
      return std::nullopt;
    return ToLocalTime(utc);
  }

  // The volume and the number of the file in it; the two files must be open at the same time.
  bool IsSameAs(const Win32File& other) const {
    BY_HANDLE_FILE_INFORMATION mine{};
    BY_HANDLE_FILE_INFORMATION theirs{};
    return GetFileInformationByHandle(handle_, &mine) != FALSE &&
           GetFileInformationByHandle(other.handle_, &theirs) != FALSE &&
           mine.dwVolumeSerialNumber == theirs.dwVolumeSerialNumber &&
           mine.nFileIndexHigh == theirs.nFileIndexHigh &&
           mine.nFileIndexLow == theirs.nFileIndexLow;
  }

  bool Close() override {
    if (handle_ == INVALID_HANDLE_VALUE) return true;
    HANDLE handle = handle_;
    handle_ = INVALID_HANDLE_VALUE;
    return CloseHandle(handle) != 0;
  }

 private:
  HANDLE handle_;
};

struct OpenArguments {
  DWORD access;
  DWORD share;
  DWORD disposition;
};

OpenArguments ArgumentsFor(OpenMode mode) {
  switch (mode) {
    case OpenMode::kRead:
      break;
    case OpenMode::kCreate:
      return {GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS};
    case OpenMode::kCreateNew:
      return {GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW};
    case OpenMode::kAppend:
      return {FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_ALWAYS};
    case OpenMode::kOwn:
      return {GENERIC_WRITE, 0, OPEN_ALWAYS};
  }
  // A document that is open in its own program can still be sent.
  return {GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING};
}

class Win32FileSystem final : public FileSystem {
 public:
  std::unique_ptr<File> Open(const std::string& path, OpenMode mode) override {
    return OpenFile(path, ArgumentsFor(mode));
  }

  bool FileExists(const std::string& path) override {
    const DWORD attributes = GetFileAttributesW(SystemPath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
  }

  bool DirectoryExists(const std::string& path) override {
    const DWORD attributes = GetFileAttributesW(SystemPath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  }

  bool RemoveFile(const std::string& path) override {
    const std::wstring wide = SystemPath(path);
    if (wide.empty()) return false;
    if (DeleteFileW(wide.c_str()) != FALSE) return true;
    const DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
  }

  bool RenameFile(const std::string& from, const std::string& to) override {
    return MoveFileExW(SystemPath(from).c_str(), SystemPath(to).c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED) != 0;
  }

  bool RenameToNew(const std::string& from, const std::string& to) override {
    return MoveFileExW(SystemPath(from).c_str(), SystemPath(to).c_str(), 0) != 0;
  }

  bool CopyWholeFile(const std::string& from, const std::string& to) override {
    return CopyFileW(SystemPath(from).c_str(), SystemPath(to).c_str(), FALSE) != 0;
  }

  bool MakeDirectory(const std::string& path) override {
    return CreateDirectoryW(SystemPath(path).c_str(), nullptr) != 0 || DirectoryExists(path);
  }

  bool RemoveEmptyDirectory(const std::string& path) override {
    return RemoveDirectoryW(SystemPath(path).c_str()) != 0;
  }

  std::vector<DirectoryEntry> List(const std::string& directory,
                                   const std::string& prefix) override {
    std::vector<DirectoryEntry> entries;
    WIN32_FIND_DATAW found{};
    const auto pattern = WithSeparator(*this, directory) + prefix + "*";
    const HANDLE search = FindFirstFileW(SystemPath(pattern).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return entries;
    do {
      auto name = Utf8FromWide(found.cFileName);
      const DWORD attributes = found.dwFileAttributes;
      // Short names match the pattern as well.
      if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 || name == "." || name == ".." ||
          !name.starts_with(prefix)) {
        continue;
      }
      entries.push_back({std::move(name), (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0});
    } while (FindNextFileW(search, &found) != FALSE);
    FindClose(search);
    return entries;
  }

  bool OthersCanWrite(const std::string& path) override {
    return OthersMayChange(SystemPath(path));
  }

  bool SameFile(const std::string& one, const std::string& other) override {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    constexpr OpenArguments kLook = {FILE_READ_ATTRIBUTES, kShareAll, OPEN_EXISTING};
    const auto first = OpenFile(one, kLook);
    if (!first) return false;
    const auto second = OpenFile(other, kLook);
    return second && first->IsSameAs(*second);
  }

  std::string FullPath(const std::string& path) override {
    return Utf8FromWide(FullWidePath(WideFromUtf8(path)));
  }

  std::string ShortPath(const std::string& path) override {
    const std::wstring wide = SystemPath(path);
    const DWORD needed = GetShortPathNameW(wide.c_str(), nullptr, 0);
    if (needed == 0) return path;
    std::wstring shortened(needed, L'\0');
    const DWORD length = GetShortPathNameW(wide.c_str(), shortened.data(), needed);
    if (length == 0 || length >= needed) return path;
    shortened.resize(length);
    return Utf8FromWide(shortened);
  }

  std::string TempDirectory() override {
    std::wstring directory(MAX_PATH + 1, L'\0');
    const DWORD length = GetTempPathW(static_cast<DWORD>(directory.size()), directory.data());
    directory.resize(std::min<size_t>(length, directory.size()));
    return WithSeparator(*this, Utf8FromWide(directory));
  }

  char Separator() const override { return '\\'; }

 private:
  static std::unique_ptr<Win32File> OpenFile(const std::string& path, const OpenArguments& how) {
    HANDLE handle = CreateFileW(SystemPath(path).c_str(), how.access, how.share, nullptr,
                                how.disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return nullptr;
    return std::make_unique<Win32File>(handle);
  }
};

}  // namespace

std::unique_ptr<FileSystem> MakeFileSystem() {
  return std::make_unique<Win32FileSystem>();
}

}  // namespace quillon
