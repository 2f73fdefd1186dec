// The records of a ZIP archive as bytes (PKWARE's APPNOTE.TXT 4.3). Sizes and positions that do not
// fit into 32 bits, and numbers of entries that do not fit into 16, go into the ZIP64 forms.
#pragma once

#include <cstdint>
#include <string>

#include "ports/LocalClock.h"

namespace quillon {

// Local time in steps of two seconds, from 1980 to 2107 (4.4.6).
struct DosTime {
  uint16_t time = 0;
  uint16_t date = 0x21;  // 1 January 1980
};

// A time outside that range becomes its nearest end.
DosTime ToDosTime(const LocalTime& local);

enum class ZipMethod : uint16_t { kStored = 0, kDeflated = 8 };

struct ZipEntry {
  std::string name;
  DosTime modified;
  ZipMethod method = ZipMethod::kDeflated;
  // An encrypted entry is followed by its data descriptor, because the header in front of the
  // encrypted data would have to tell the check sum before the data was read.
  bool encrypted = false;
  // Room in the records around the data for sizes beyond 32 bits; known before the sizes are.
  bool zip64 = false;
  uint32_t crc = 0;
  uint64_t size = 0;
  uint64_t packedSize = 0;  // with the encryption header
  uint64_t offset = 0;      // of the local header

  // Whether the sizes fit into the records around the data.
  bool Fits() const;
};

// Its length does not depend on the sizes, so that it can be written again when they are known.
std::string LocalHeader(const ZipEntry& entry);
std::string DataDescriptor(const ZipEntry& entry);
std::string DirectoryHeader(const ZipEntry& entry);

// What follows the directory, which has `count` entries in `size` bytes at `offset`.
std::string EndOfArchive(uint64_t count, uint64_t size, uint64_t offset);

}  // namespace quillon
