#include "codec/zip/ZipRecords.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace quillon {
namespace {

// In place of what stands in a ZIP64 record; these values themselves do not fit either.
constexpr uint64_t kMost16 = 0xFFFF;
constexpr uint64_t kMost32 = 0xFFFFFFFF;

constexpr uint16_t kEncryptedFlag = 1 << 0;
constexpr uint16_t kDescriptorFlag = 1 << 3;
constexpr uint16_t kUtf8Flag = 1 << 11;

// Of the format, times ten: plain deflate, ZIP64, names in UTF-8. The system given is Unix: names
// of DOS go through a code page in some programs, in spite of their flag.
constexpr uint16_t kVersion = 20;
constexpr uint16_t kZip64Version = 45;
constexpr uint16_t kMadeBy = (3 << 8) | 63;
constexpr uint32_t kAttributes = uint32_t{0100644} << 16;  // a file, for its owner to change

constexpr uint16_t kZip64Field = 1;
constexpr uint64_t kZip64EndRest = 44;  // of its record, behind the field that says so

// Little-endian fields, one behind the other.
class Record {
 public:
  Record& Two(uint64_t value) { return Number(value, 2); }
  Record& Four(uint64_t value) { return Number(value, 4); }
  Record& Eight(uint64_t value) { return Number(value, 8); }
  Record& Text(std::string_view text) {
    bytes_ += text;
    return *this;
  }
  std::string Bytes() { return std::move(bytes_); }

 private:
  Record& Number(uint64_t value, int size) {
    for (int i = 0; i < size; ++i) bytes_ += static_cast<char>((value >> (8 * i)) & 0xFF);
    return *this;
  }

  std::string bytes_;
};

uint16_t Flags(const ZipEntry& entry) {
  const bool ascii = std::all_of(entry.name.begin(), entry.name.end(),
                                 [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  return static_cast<uint16_t>((entry.encrypted ? kEncryptedFlag | kDescriptorFlag : 0) |
                               (ascii ? 0 : kUtf8Flag));
}

uint16_t VersionFor(bool zip64) {
  return zip64 ? kZip64Version : kVersion;
}

// What both headers have in common.
void PutCommon(Record& record, const ZipEntry& entry, bool zip64) {
  record.Two(VersionFor(zip64))
      .Two(Flags(entry))
      .Two(static_cast<uint16_t>(entry.method))
      .Two(entry.modified.time)
      .Two(entry.modified.date);
}

}  // namespace

DosTime ToDosTime(const LocalTime& local) {
  if (local.year < 1980) return {};
  if (local.year > 2107) return {(23 << 11) | (59 << 5) | (58 / 2), (127 << 9) | (12 << 5) | 31};
  return {
      static_cast<uint16_t>((local.hour << 11) | (local.minute << 5) |
                            (std::min(local.second, 59) / 2)),
      static_cast<uint16_t>(((local.year - 1980) << 9) | (local.month << 5) | local.day),
  };
}

bool ZipEntry::Fits() const {
  return zip64 || (size < kMost32 && packedSize < kMost32);
}

std::string LocalHeader(const ZipEntry& entry) {
  const bool later = entry.encrypted;  // the descriptor has them
  const uint64_t size = later ? 0 : entry.size;
  const uint64_t packedSize = later ? 0 : entry.packedSize;
  Record record;
  record.Four(0x04034B50);
  PutCommon(record, entry, entry.zip64);
  record.Four(later ? 0 : entry.crc)
      .Four(entry.zip64 ? kMost32 : packedSize)
      .Four(entry.zip64 ? kMost32 : size)
      .Two(entry.name.size())
      .Two(entry.zip64 ? 20 : 0)
      .Text(entry.name);
  if (entry.zip64) record.Two(kZip64Field).Two(16).Eight(size).Eight(packedSize);
  return record.Bytes();
}

std::string DataDescriptor(const ZipEntry& entry) {
  Record record;
  record.Four(0x08074B50).Four(entry.crc);
  if (entry.zip64) {
    record.Eight(entry.packedSize).Eight(entry.size);
  } else {
    record.Four(entry.packedSize).Four(entry.size);
  }
  return record.Bytes();
}

std::string DirectoryHeader(const ZipEntry& entry) {
  Record fields;
  for (const uint64_t value : {entry.size, entry.packedSize, entry.offset}) {
    if (value >= kMost32) fields.Eight(value);
  }
  const std::string large = fields.Bytes();
  Record record;
  record.Four(0x02014B50).Two(kMadeBy);
  PutCommon(record, entry, entry.zip64 || !large.empty());
  record.Four(entry.crc)
      .Four(std::min(entry.packedSize, kMost32))
      .Four(std::min(entry.size, kMost32))
      .Two(entry.name.size())
      .Two(large.empty() ? 0 : 4 + large.size())
      .Two(0)  // no comment
      .Two(0)  // on the first disk
      .Two(0)  // not known to be text
      .Four(kAttributes)
      .Four(std::min(entry.offset, kMost32))
      .Text(entry.name);
  if (!large.empty()) record.Two(kZip64Field).Two(large.size()).Text(large);
  return record.Bytes();
}

std::string EndOfArchive(uint64_t count, uint64_t size, uint64_t offset) {
  Record record;
  if (count >= kMost16 || size >= kMost32 || offset >= kMost32) {
    record.Four(0x06064B50).Eight(kZip64EndRest).Two(kMadeBy).Two(kZip64Version);
    record.Four(0).Four(0).Eight(count).Eight(count).Eight(size).Eight(offset);
    // The locator of that record: its disk, its place, the number of disks.
    record.Four(0x07064B50).Four(0).Eight(offset + size).Four(1);
  }
  const uint64_t shownCount = std::min(count, kMost16);
  record.Four(0x06054B50).Two(0).Two(0).Two(shownCount).Two(shownCount);
  record.Four(std::min(size, kMost32)).Four(std::min(offset, kMost32)).Two(0);
  return record.Bytes();
}

}  // namespace quillon
