// The files of the system, as the portable code sees them.
//
// Paths are UTF-8 text in the system's own notation (Windows: drive letters, UNC, both slashes;
// Linux: slashes). Ordinary failures (no such file, disk full, access denied) are return values;
// nothing here throws for them. Every operation handles files beyond 4 GiB. Reads and writes are
// unbuffered: callers move blocks, not bytes.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ports/LocalClock.h"

namespace quillon {

// One open file. The destructor closes it; a writer calls Close itself, because only then it hears
// of a failed write-back.
class File {
 public:
  virtual ~File() = default;

  // Reads up to buffer.size() bytes and returns how many; 0 at the end of the file, no value when
  // the read failed.
  virtual std::optional<size_t> Read(std::span<uint8_t> buffer) = 0;

  // Writes all bytes, or returns false (some of them may have been written).
  virtual bool Write(std::span<const uint8_t> bytes) = 0;

  // Sets the position of the next read or write, in bytes from the start.
  virtual bool Seek(uint64_t position) = 0;

  // Puts what was written where a power cut does not reach it.
  virtual bool Flush() { return true; }

  virtual std::optional<uint64_t> Size() = 0;

  // When the file was last written, in local time; no value when the system cannot tell.
  virtual std::optional<LocalTime> ModificationTime() { return std::nullopt; }

  // False when data could not be stored. Later operations on the file fail; a second Close does
  // nothing and returns true.
  virtual bool Close() = 0;
};

enum class OpenMode {
  kRead,       // an existing file
  kCreate,     // for writing; an existing file is emptied
  kCreateNew,  // for writing; fails when the file exists, so that two writers never share one
  kAppend,     // for writing at the end; created when missing
  kOwn,        // for writing; created when missing, and nobody else's while it is open: another
               // process cannot open it so, and can again when this one has ended, however it did
};

struct DirectoryEntry {
  std::string name;
  bool isDirectory = false;
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // Null when the file cannot be opened that way. Directories cannot be opened.
  virtual std::unique_ptr<File> Open(const std::string& path, OpenMode mode) = 0;

  virtual bool FileExists(const std::string& path) = 0;
  virtual bool DirectoryExists(const std::string& path) = 0;

  // True when the file is gone afterwards, also when there was none.
  virtual bool RemoveFile(const std::string& path) = 0;
  // Replaces an existing file of the new name.
  virtual bool RenameFile(const std::string& from, const std::string& to) = 0;
  // The same, but false when the new name is taken, so that no file is ever lost.
  virtual bool RenameToNew(const std::string& from, const std::string& to) {
    return !FileExists(to) && RenameFile(from, to);
  }
  // Replaces an existing target; a copy that fails half-way leaves no target.
  virtual bool CopyWholeFile(const std::string& from, const std::string& to) = 0;

  // One level only; true when the directory exists afterwards.
  virtual bool MakeDirectory(const std::string& path) = 0;
  virtual bool RemoveEmptyDirectory(const std::string& path) = 0;

  // What is in the directory and has a name that begins so. Links are left out: what is reached by
  // them is somewhere else.
  virtual std::vector<DirectoryEntry> List(const std::string& /*directory*/,
                                           const std::string& /*prefix*/) {
    return {};
  }

  // Whether a user can change the file, or what is in the directory, who is neither this one nor an
  // administrator. True when the system does not tell.
  virtual bool OthersCanWrite(const std::string& /*path*/) { return false; }

  // Whether both exist and are one file, whatever links, short names or case lead to it.
  virtual bool SameFile(const std::string& one, const std::string& other) {
    return FileExists(one) && FullPath(one) == FullPath(other);
  }

  // The absolute form; the file need not exist. The path itself when the system cannot tell.
  virtual std::string FullPath(const std::string& path) = 0;
  // The 8.3 form of an existing file's path where the system keeps one, else the path itself.
  virtual std::string ShortPath(const std::string& path) = 0;
  // The directory for temporary files, with a separator at its end.
  virtual std::string TempDirectory() = 0;
  // The character between directory and name: '\\' on Windows, '/' on Linux.
  virtual char Separator() const = 0;
};

}  // namespace quillon
