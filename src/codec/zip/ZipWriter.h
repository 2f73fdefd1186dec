// A ZIP archive being written (PKWARE's APPNOTE.TXT), one file after the other. What is in memory
// does not grow with the files, only with their number.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "codec/BlockIo.h"
#include "codec/zip/Deflater.h"
#include "codec/zip/ZipNames.h"
#include "codec/zip/ZipRecords.h"
#include "platform/FileSystem.h"

namespace quillon {

class ZipCipher;

class ZipWriter {
 public:
  // Told how many more bytes of a file have been packed; false stops.
  using OnPacked = std::function<bool(size_t)>;

  // Replaces an older file of the name. The archive is removed again unless Finish succeeds.
  // `factor` is that of Deflater; an empty password means no encryption.
  ZipWriter(FileSystem& files, const std::string& archive, int factor, std::string password);

  // False when the file cannot be read, the archive cannot be written, or `onPacked` stops; the
  // archive is then lost.
  bool Add(File& input, const std::string& path, const OnPacked& onPacked);

  // True when the archive is complete.
  bool Finish();

 private:
  bool PackData(File& input, ZipEntry& entry, ZipCipher* cipher, const OnPacked& onPacked);
  void PackBlock(std::span<const uint8_t> bytes, bool last, ZipEntry& entry, ZipCipher* cipher);
  void PackWhole(std::span<const uint8_t> bytes, ZipEntry& entry);

  OutputFile output_;
  Deflater deflater_;
  const std::string password_;
  ZipNames names_;
  std::string directory_;  // its entries so far
  uint64_t count_ = 0;
};

}  // namespace quillon
