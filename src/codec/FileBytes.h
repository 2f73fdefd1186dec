// Parts of an open file, read in order and as often as one likes through one small buffer: what a
// record claims of its size takes no memory.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "codec/ByteSink.h"
#include "ports/FileSystem.h"

namespace quillon {

class FileBlocks {
 public:
  explicit FileBlocks(File& file) : file_(file), size_(file.Size().value_or(0)) {}

  std::uint64_t Size() const noexcept { return size_; }

  // What is in memory from that position on; nothing when it cannot be read.
  std::string_view From(std::uint64_t position) {
    if (position < start_ || position >= start_ + used_) Load(position);
    const auto offset = static_cast<std::size_t>(position - start_);
    return {reinterpret_cast<const char*>(buffer_.data()) + offset, used_ - offset};
  }

 private:
  void Load(std::uint64_t position);

  File& file_;
  const std::uint64_t size_;
  std::uint64_t start_ = 0;  // of what is in the buffer
  std::size_t used_ = 0;
  std::array<std::uint8_t, 16384> buffer_{};
};

// A copy is read by itself. Numbers have their low byte first.
class FileBytes {
 public:
  explicit FileBytes(FileBlocks& file) : file_(&file), end_(file.Size()) {}

  std::uint64_t Left() const noexcept { return end_ - at_; }

  // Whether more was asked for than there is, or could be read. Such numbers are 0.
  bool Failed() const noexcept { return failed_; }

  std::uint8_t Byte();
  std::uint16_t Number16();
  std::uint32_t Number32();

  // The next bytes, as a part of its own: what there is of them.
  FileBytes Take(std::uint64_t size);
  void Skip(std::uint64_t size) { Take(size); }

  // The rest, or as much of it.
  std::string Text(std::size_t most);
  void CopyTo(ByteSink& sink);

 private:
  std::string_view Next(std::uint64_t most);

  FileBlocks* file_;
  std::uint64_t at_ = 0;
  std::uint64_t end_;
  bool failed_ = false;
};

}  // namespace quillon
