#include "internet/EncodedFile.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace quillon {

EncodedFile::EncodedFile(FileSystem& files, const std::string& path, bool stuffDots)
    : file_(files.Open(path, OpenMode::kRead)), stuffDots_(stuffDots) {}

DataSource::State EncodedFile::Fill(std::string& block, std::size_t wanted) {
  if (!file_) return State::Failed;
  const auto start = block.size();
  block.resize(start + std::max<std::size_t>(wanted, 1));
  const auto count = file_->Read(
      std::span(reinterpret_cast<std::uint8_t*>(block.data()), block.size()).subspan(start));
  block.resize(start + count.value_or(0));
  if (!count) return State::Failed;
  if (stuffDots_) StuffDots(block, start);
  return *count == 0 ? State::End : State::More;
}

// Lines that begin with "." are few: of a uuencoded file only a last one can.
void EncodedFile::StuffDots(std::string& block, std::size_t start) {
  if (start == block.size()) return;
  if (atLineStart_ && block[start] == '.') block.insert(start++, 1, '.');
  for (auto at = block.find("\n.", start); at != std::string::npos;
       at = block.find("\n.", at + 2)) {
    block.insert(at + 1, 1, '.');
  }
  atLineStart_ = block.back() == '\n';
}

}  // namespace quillon
