// A file uuencoded: a line in front, the lines of the data, a trailer.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "codec/BlockIo.h"
#include "codec/FileEncoder.h"
#include "ports/FileSystem.h"

namespace quillon {

inline constexpr uint64_t kWholeFile = std::numeric_limits<uint64_t>::max();

// Appends the lines for the next `bytes` bytes of the input, or for what it has, to an output. Both
// must outlive it.
class UuDataEncoder final : public FileEncoder {
 public:
  UuDataEncoder(File& input, uint64_t bytes, OutputFile& output);

  // Done: the lines are in the output, which goes on.
  State Step() override;

 private:
  File& input_;
  uint64_t left_;
  OutputFile& output_;
  std::vector<uint8_t> block_;
};

class UuFileEncoder final : public FileEncoder {
 public:
  // `beginLine` and `trailer` stand around the lines. Nothing is written when the input cannot be
  // opened or is the output.
  UuFileEncoder(FileSystem& files, const std::string& inputPath, std::string outputPath,
                std::string beginLine, std::string_view trailer);

  State Step() override;

 private:
  FileSystem& files_;
  const std::string outputPath_;
  const std::string beginLine_;
  const std::string trailer_;
  std::unique_ptr<File> input_;
  std::unique_ptr<OutputFile> output_;
  std::unique_ptr<UuDataEncoder> data_;
};

}  // namespace quillon
