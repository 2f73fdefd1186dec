#include "FaultSources.h"

#include <algorithm>

namespace mailhost {

bool CutSource::Read(std::string& out) {
  const std::size_t before = out.size();
  const bool more = source_->Read(out);
  const std::size_t made = out.size() - before;
  if (!limit_) {
    out.resize(before + made / 2);
    return false;
  }
  if (made >= *limit_) {
    out.resize(before + static_cast<std::size_t>(*limit_));
    return false;
  }
  *limit_ -= made;
  return more;
}

bool GarbageSource::Read(std::string& out) {
  constexpr std::uint64_t kChunk = 16 * 1024;
  const std::uint64_t end = std::min(size_, made_ + kChunk);
  for (; made_ < end; ++made_) out += Next();
  return made_ < size_;
}

char GarbageSource::Next() {
  constexpr std::uint64_t kLine = 40;
  if (lines_) {
    const std::uint64_t column = made_ % kLine;
    if (column == kLine - 2 || made_ + 2 == size_) return '\r';
    if (column == kLine - 1 || made_ + 1 == size_) return '\n';
  }
  if (made_ == std::min<std::uint64_t>(3, size_ / 2)) return '\0';
  for (;;) {
    const auto byte = static_cast<unsigned char>(random_());
    if (byte != '\r' && byte != '\n') return static_cast<char>(byte);
  }
}

bool FloodSource::Read(std::string& out) {
  constexpr std::size_t kChunk = 64 * 1024;
  for (const std::size_t end = out.size() + kChunk; made_ < count_ && out.size() < end;) {
    const std::string number = std::to_string(++made_);
    for (const char c : line_) {
      if (c == '#') {
        out += number;
      } else {
        out += c;
      }
    }
    out += "\r\n";
  }
  return made_ < count_;
}

}  // namespace mailhost
