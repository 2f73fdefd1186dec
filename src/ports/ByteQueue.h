// Bytes in the order in which they came. The front is taken off without moving the rest.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillon {

class ByteQueue {
 public:
  // Writable, because a system may decrypt where the bytes stand.
  char* Data() noexcept { return bytes_.data() + begin_; }
  std::size_t Size() const noexcept { return bytes_.size() - begin_; }
  std::string_view View() const noexcept { return std::string_view(bytes_).substr(begin_); }

  void Append(std::string_view more) {
    bytes_.erase(0, begin_);
    begin_ = 0;
    bytes_.append(more);
  }
  void Drop(std::size_t count) noexcept {
    begin_ += count;
    if (begin_ < bytes_.size()) return;
    bytes_.clear();
    begin_ = 0;
  }

 private:
  std::string bytes_;
  std::size_t begin_ = 0;
};

}  // namespace quillon
