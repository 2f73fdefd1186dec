#include "codec/BlockIo.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace quillon {
namespace {

// More than the longest uuencoded line with its line end.
constexpr size_t kOrdinaryLine = 256;
constexpr size_t kBufferUnit = 4096;
constexpr size_t kMostBuffered = 2 * kIoBlock;

}  // namespace

std::vector<uint8_t> BufferFor(File& file, size_t unit) {
  // One byte more than the file has lets the first read see its end.
  const uint64_t wanted = file.Size().value_or(kIoBlock) + 1;
  const uint64_t units = std::min<uint64_t>((wanted + unit - 1) / unit, kIoBlock / unit);
  return std::vector<uint8_t>(static_cast<size_t>(std::max<uint64_t>(units, 1)) * unit);
}

std::optional<size_t> ReadBlock(File& file, std::span<uint8_t> buffer) {
  size_t filled = 0;
  while (filled < buffer.size()) {
    const std::optional<size_t> count = file.Read(buffer.subspan(filled));
    if (!count) return std::nullopt;
    if (*count == 0) break;
    filled += *count;
  }
  return filled;
}

LineReader::LineReader(std::unique_ptr<File> file)
    : file_(std::move(file)), failed_(file_ == nullptr) {
  if (file_) buffer_ = BufferFor(*file_, kBufferUnit);
}

bool LineReader::Next(std::span<const uint8_t>& piece, bool& endsLine) {
  SkipLfOfCrLf();
  size_t lineEnd = FindLineEnd();
  if (lineEnd == end_ && !atEnd_) {
    Fill();
    lineEnd = FindLineEnd();
  }
  if (failed_ || position_ == end_) return false;
  piece = std::span(buffer_).subspan(position_, lineEnd - position_);
  endsLine = lineEnd < end_ || atEnd_;
  skipLf_ = lineEnd < end_ && buffer_[lineEnd] == '\r';
  position_ = std::min(lineEnd + 1, end_);
  return true;
}

std::span<const uint8_t> LineReader::Buffered() {
  SkipLfOfCrLf();
  if (end_ - position_ < kOrdinaryLine && !atEnd_) Fill();
  if (failed_) return {};
  return std::span(buffer_).subspan(position_, end_ - position_);
}

bool LineReader::Rewind() {
  if (failed_ || !file_->Seek(0)) return false;
  position_ = end_ = nextCr_ = nextLf_ = 0;
  skipLf_ = atEnd_ = false;
  return true;
}

void LineReader::Fill() {
  if (failed_) return;
  const bool crKnown = nextCr_ >= position_;
  const bool lfKnown = nextLf_ >= position_;
  const size_t kept = end_ - position_;
  std::memmove(buffer_.data(), buffer_.data() + position_, kept);
  nextCr_ = crKnown ? nextCr_ - position_ : 0;
  nextLf_ = lfKnown ? nextLf_ - position_ : 0;
  position_ = 0;
  const std::optional<size_t> count = ReadBlock(*file_, std::span(buffer_).subspan(kept));
  failed_ = !count;
  end_ = kept + count.value_or(0);
  atEnd_ = end_ < buffer_.size();
  if (!crKnown || nextCr_ == kept) nextCr_ = Find('\r', crKnown ? kept : 0);
  if (!lfKnown || nextLf_ == kept) nextLf_ = Find('\n', lfKnown ? kept : 0);
}

void LineReader::SkipLfOfCrLf() {
  if (!skipLf_) return;
  if (position_ == end_ && !atEnd_) Fill();
  if (position_ < end_ && buffer_[position_] == '\n') ++position_;
  skipLf_ = false;
}

size_t LineReader::Find(uint8_t character, size_t from) const {
  if (from == end_) return end_;
  const void* const found = std::memchr(buffer_.data() + from, character, end_ - from);
  return found == nullptr
             ? end_
             : static_cast<size_t>(static_cast<const uint8_t*>(found) - buffer_.data());
}

size_t LineReader::FindLineEnd() {
  if (nextCr_ < position_) nextCr_ = Find('\r', position_);
  if (nextLf_ < position_) nextLf_ = Find('\n', position_);
  return std::min(nextCr_, nextLf_);
}

OutputFile::OutputFile(FileSystem& files, std::string path)
    : files_(files), path_(std::move(path)) {
  if (!files_.RemoveFile(path_)) return;
  file_ = files_.Open(path_, OpenMode::kCreate);
  good_ = file_ != nullptr;
}

OutputFile::~OutputFile() {
  if (finished_ || !file_) return;
  file_->Close();
  files_.RemoveFile(path_);
}

uint8_t* OutputFile::Reserve(size_t size) {
  if (used_ + size > kMostBuffered) Flush();
  const size_t needed = used_ + size;
  if (needed > buffer_.size()) buffer_.resize(std::min(2 * needed, kMostBuffered));
  return buffer_.data() + used_;
}

void OutputFile::Append(std::span<const uint8_t> bytes) {
  while (!bytes.empty()) {
    const size_t count = std::min(bytes.size(), kIoBlock);
    std::memcpy(Reserve(count), bytes.data(), count);
    Commit(count);
    bytes = bytes.subspan(count);
  }
}

void OutputFile::Append(std::string_view text) {
  Append(std::span(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
}

void OutputFile::Overwrite(uint64_t position, std::string_view bytes) {
  if (position >= written_) {
    std::memcpy(buffer_.data() + (position - written_), bytes.data(), bytes.size());
    return;
  }
  Flush();
  good_ = good_ && file_->Seek(position) &&
          file_->Write(std::span(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size())) &&
          file_->Seek(written_);
}

bool OutputFile::Finish() {
  Flush();
  if (!good_) return false;
  good_ = false;
  finished_ = file_->Close();
  return finished_;
}

void OutputFile::Flush() {
  if (good_ && used_ != 0) good_ = file_->Write(std::span(buffer_).first(used_));
  written_ += used_;
  used_ = 0;
}

std::unique_ptr<File> OpenInput(FileSystem& files, const std::string& inputPath,
                                const std::string& outputPath) {
  if (SamePath(files, inputPath, outputPath)) return nullptr;
  return files.Open(inputPath, OpenMode::kRead);
}

bool SamePath(FileSystem& files, const std::string& one, const std::string& other) {
  std::string first = files.FullPath(one);
  std::string second = files.FullPath(other);
  if (files.Separator() == '\\') {
    // Windows takes no notice of case. Letters beyond ASCII are left to the system, which knows
    // them.
    const auto lower = [](char c) {
      return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    };
    std::transform(first.begin(), first.end(), first.begin(), lower);
    std::transform(second.begin(), second.end(), second.begin(), lower);
  }
  return first == second || files.SameFile(one, other);
}

}  // namespace quillon
