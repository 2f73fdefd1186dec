#include "codec/zip/ZipWriter.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace quillon {
namespace {

constexpr size_t kBufferUnit = 4096;
// From this size on an entry gets the room for sizes beyond 32 bits: what cannot be compressed
// grows a little, and a file can grow while it is packed.
constexpr uint64_t kZip64Size = 0xF0000000;

}  // namespace

ZipWriter::ZipWriter(FileSystem& files, const std::string& archive, int factor,
                     std::string password)
    : output_(files, archive), deflater_(factor), password_(std::move(password)) {}

void ZipWriter::Begin(File& input, const std::string& path) {
  input_ = &input;
  entry_ = {};
  entry_.name = names_.NameFor(path);
  if (const auto modified = input.ModificationTime()) entry_.modified = ToDosTime(*modified);
  entry_.zip64 = input.Size().value_or(kZip64Size) >= kZip64Size;
  entry_.encrypted = !password_.empty();
  entry_.offset = output_.Position();
  output_.Append(LocalHeader(entry_));
  if (entry_.encrypted) {
    // The check sum is not known yet; with a data descriptor the time stands in for it.
    const auto header =
        cipher_.emplace(password_).Header(static_cast<uint8_t>(entry_.modified.time >> 8));
    output_.Append(header);
    entry_.packedSize = header.size();
  }
  block_ = BufferFor(input, kBufferUnit);
  deflater_.Restart();
}

FileEncoder::State ZipWriter::Step() {
  using State = FileEncoder::State;
  const std::optional<size_t> count = ReadBlock(*input_, block_);
  if (!count) return State::Failed;
  const std::span<const uint8_t> bytes = std::span(block_).first(*count);
  const bool last = bytes.size() < block_.size();
  const bool whole = last && entry_.size == 0;
  entry_.crc =
      static_cast<uint32_t>(::crc32(entry_.crc, bytes.data(), static_cast<uInt>(bytes.size())));
  entry_.size += bytes.size();
  if (whole && !cipher_) {
    PackWhole(bytes);
  } else {
    PackBlock(bytes, last);
  }
  if (!output_.Good()) return State::Failed;
  if (!last) return State::More;
  return End() ? State::Done : State::Failed;
}

bool ZipWriter::End() {
  if (!entry_.Fits()) return false;
  if (entry_.encrypted) {
    output_.Append(DataDescriptor(entry_));
  } else {
    output_.Overwrite(entry_.offset, LocalHeader(entry_));
  }
  directory_ += DirectoryHeader(entry_);
  ++count_;
  return output_.Good();
}

bool ZipWriter::Finish() {
  const uint64_t offset = output_.Position();
  output_.Append(directory_);
  output_.Append(EndOfArchive(count_, directory_.size(), offset));
  return output_.Finish();
}

void ZipWriter::PackBlock(std::span<const uint8_t> bytes, bool last) {
  deflater_.Put(bytes, last);
  size_t size = kIoBlock;
  while (size == kIoBlock) {
    const std::span<uint8_t> room(output_.Reserve(kIoBlock), kIoBlock);
    size = deflater_.Take(room);
    if (cipher_) cipher_->Encrypt(room.first(size));
    output_.Commit(size);
    entry_.packedSize += size;
  }
}

// A small file stays as it is when it would not become smaller.
void ZipWriter::PackWhole(std::span<const uint8_t> bytes) {
  const size_t bound = std::max(deflater_.Bound(bytes.size()), bytes.size());
  const std::span<uint8_t> room(output_.Reserve(bound), bound);
  deflater_.Put(bytes, true);
  entry_.packedSize = deflater_.Take(room);
  if (entry_.packedSize >= bytes.size()) {
    entry_.method = ZipMethod::kStored;
    entry_.packedSize = bytes.size();
    std::copy(bytes.begin(), bytes.end(), room.begin());
  }
  output_.Commit(static_cast<size_t>(entry_.packedSize));
}

}  // namespace quillon
