#include "codec/zip/ZipWriter.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "codec/zip/ZipCipher.h"

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

bool ZipWriter::Add(File& input, const std::string& path, const OnPacked& onPacked) {
  ZipEntry entry;
  entry.name = names_.NameFor(path);
  if (const auto modified = input.ModificationTime()) entry.modified = ToDosTime(*modified);
  entry.zip64 = input.Size().value_or(kZip64Size) >= kZip64Size;
  entry.encrypted = !password_.empty();
  entry.offset = output_.Position();
  output_.Append(LocalHeader(entry));
  std::optional<ZipCipher> cipher;
  if (entry.encrypted) {
    // The check sum is not known yet; with a data descriptor the time stands in for it.
    const auto header =
        cipher.emplace(password_).Header(static_cast<uint8_t>(entry.modified.time >> 8));
    output_.Append(header);
    entry.packedSize = header.size();
  }
  if (!PackData(input, entry, cipher ? &*cipher : nullptr, onPacked) || !entry.Fits()) return false;
  if (entry.encrypted) {
    output_.Append(DataDescriptor(entry));
  } else {
    output_.Overwrite(entry.offset, LocalHeader(entry));
  }
  directory_ += DirectoryHeader(entry);
  ++count_;
  return output_.Good();
}

bool ZipWriter::Finish() {
  const uint64_t offset = output_.Position();
  output_.Append(directory_);
  output_.Append(EndOfArchive(count_, directory_.size(), offset));
  return output_.Finish();
}

bool ZipWriter::PackData(File& input, ZipEntry& entry, ZipCipher* cipher,
                         const OnPacked& onPacked) {
  std::vector<uint8_t> block = BufferFor(input, kBufferUnit);
  deflater_.Restart();
  for (bool last = false; !last;) {
    const std::optional<size_t> count = ReadBlock(input, block);
    if (!count) return false;
    const std::span<const uint8_t> bytes = std::span(block).first(*count);
    last = bytes.size() < block.size();
    const bool whole = last && entry.size == 0;
    entry.crc =
        static_cast<uint32_t>(::crc32(entry.crc, bytes.data(), static_cast<uInt>(bytes.size())));
    entry.size += bytes.size();
    if (whole && cipher == nullptr) {
      PackWhole(bytes, entry);
    } else {
      PackBlock(bytes, last, entry, cipher);
    }
    if (!output_.Good() || !onPacked(bytes.size())) return false;
  }
  return true;
}

void ZipWriter::PackBlock(std::span<const uint8_t> bytes, bool last, ZipEntry& entry,
                          ZipCipher* cipher) {
  deflater_.Put(bytes, last);
  size_t size = kIoBlock;
  while (size == kIoBlock) {
    const std::span<uint8_t> room(output_.Reserve(kIoBlock), kIoBlock);
    size = deflater_.Take(room);
    if (cipher != nullptr) cipher->Encrypt(room.first(size));
    output_.Commit(size);
    entry.packedSize += size;
  }
}

// A small file stays as it is when it would not become smaller.
void ZipWriter::PackWhole(std::span<const uint8_t> bytes, ZipEntry& entry) {
  const size_t bound = std::max(deflater_.Bound(bytes.size()), bytes.size());
  const std::span<uint8_t> room(output_.Reserve(bound), bound);
  deflater_.Put(bytes, true);
  entry.packedSize = deflater_.Take(room);
  if (entry.packedSize >= bytes.size()) {
    entry.method = ZipMethod::kStored;
    entry.packedSize = bytes.size();
    std::copy(bytes.begin(), bytes.end(), room.begin());
  }
  output_.Commit(static_cast<size_t>(entry.packedSize));
}

}  // namespace quillon
