// Files in blocks: what the codecs read from and write to. Memory is bounded whatever the size of a
// file or of a line.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ports/FileSystem.h"

namespace quillon {

inline constexpr size_t kIoBlock = 256 * 1024;

// A buffer to read the file through: whole units, as many as the file has, at least one and at most
// kIoBlock.
std::vector<uint8_t> BufferFor(File& file, size_t unit);

// Reads until the buffer is full or the file ends; no value when reading failed.
std::optional<size_t> ReadBlock(File& file, std::span<uint8_t> buffer);

// Reads a file as text lines that end in CR LF, LF or CR; the last may have no line end.
class LineReader {
 public:
  explicit LineReader(std::unique_ptr<File> file);

  // The next line without its line end, or, of a line longer than a block, the next piece;
  // `endsLine` tells whether the line ends with it. The bytes are valid until the next call. False
  // at the end of the file and when reading failed.
  bool Next(std::span<const uint8_t>& piece, bool& endsLine);

  // Gives the last `count` bytes of a piece that did not end its line back, but never all of it:
  // they come again with what follows them.
  void Unread(size_t count) { position_ -= count; }

  // What is in memory of the file from the current position; at least one full line of ordinary
  // length unless the file ends before. Skip moves past the start of it, to the start of a line.
  std::span<const uint8_t> Buffered();
  void Skip(size_t count) { position_ += count; }

  bool Rewind();
  bool Failed() const { return failed_; }

 private:
  void Fill();
  void SkipLfOfCrLf();
  size_t Find(uint8_t character, size_t from) const;
  size_t FindLineEnd();

  std::unique_ptr<File> file_;
  std::vector<uint8_t> buffer_;
  size_t position_ = 0;
  size_t end_ = 0;
  // The first of each in the buffer from position_ on, end_ when there is none; below position_
  // when not looked for yet. Kept, so that a file without one of the two is not searched to its end
  // for every line.
  size_t nextCr_ = 0;
  size_t nextLf_ = 0;
  bool skipLf_ = false;  // the line end before position_ was a CR
  bool atEnd_ = false;
  bool failed_ = false;
};

// A file being made. It replaces an older one of the same name, and is removed again unless Finish
// succeeds.
class OutputFile {
 public:
  OutputFile(FileSystem& files, std::string path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  // Room for `size` bytes, at most 2 * kIoBlock; Commit tells how many of them were filled.
  uint8_t* Reserve(size_t size);
  void Commit(size_t size) { used_ += size; }

  void Append(std::span<const uint8_t> bytes);
  void Append(std::string_view text);

  // How many bytes there are so far.
  uint64_t Position() const { return written_ + used_; }

  // Replaces bytes that were appended together earlier.
  void Overwrite(uint64_t position, std::string_view bytes);

  // False once opening or writing failed; everything later is ignored.
  bool Good() const { return good_; }

  // Writes what is left and closes. True when the file is complete.
  bool Finish();

 private:
  void Flush();

  FileSystem& files_;
  const std::string path_;
  std::unique_ptr<File> file_;
  std::vector<uint8_t> buffer_;  // grows with its use, to 2 * kIoBlock at most
  size_t used_ = 0;
  uint64_t written_ = 0;  // bytes handed to the file
  bool good_ = false;
  bool finished_ = false;
};

// The file to read; null when it cannot be read, or is the one that is going to be written.
std::unique_ptr<File> OpenInput(FileSystem& files, const std::string& inputPath,
                                const std::string& outputPath);

// Whether both paths name the same file: by their texts, or, when both exist, by what the system
// says.
bool SamePath(FileSystem& files, const std::string& one, const std::string& other);

}  // namespace quillon
