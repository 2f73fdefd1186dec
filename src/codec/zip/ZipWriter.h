// A ZIP archive being written (PKWARE's APPNOTE.TXT), one file after the other. What is in memory
// does not grow with the files, only with their number.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "codec/BlockIo.h"
#include "codec/FileEncoder.h"
#include "codec/zip/Deflater.h"
#include "codec/zip/ZipCipher.h"
#include "codec/zip/ZipNames.h"
#include "codec/zip/ZipRecords.h"
#include "ports/FileSystem.h"

namespace quillon {

class ZipWriter {
 public:
  // Replaces an older file of the name. The archive is removed again unless Finish succeeds.
  // `factor` is that of Deflater; an empty password means no encryption.
  ZipWriter(FileSystem& files, const std::string& archive, int factor, std::string password);

  // Adds a file under the name at the end of `path`. The file must live until all steps are done.
  void Begin(File& input, const std::string& path);
  // Packs the next block of the file. Failed: it cannot be read or the archive cannot be written;
  // the archive is then lost.
  FileEncoder::State Step();

  // True when the archive is complete.
  bool Finish();

 private:
  void PackBlock(std::span<const uint8_t> bytes, bool last);
  void PackWhole(std::span<const uint8_t> bytes);
  bool End();

  OutputFile output_;
  Deflater deflater_;
  const std::string password_;
  ZipNames names_;
  std::string directory_;  // its entries so far
  uint64_t count_ = 0;
  // Of the file that is being added.
  File* input_ = nullptr;
  ZipEntry entry_;
  std::optional<ZipCipher> cipher_;
  std::vector<uint8_t> block_;
};

}  // namespace quillon
