// A file as lines of base64 (RFC 2045, section 6.8), with CR LF behind each of them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "codec/BlockIo.h"
#include "codec/FileEncoder.h"
#include "ports/FileSystem.h"

namespace quillon {

class Base64FileEncoder final : public FileEncoder {
 public:
  // Nothing is written when the input cannot be opened or is the output.
  Base64FileEncoder(FileSystem& files, const std::string& inputPath, std::string outputPath);

  State Step() override;

 private:
  FileSystem& files_;
  const std::string outputPath_;
  std::unique_ptr<File> input_;
  std::unique_ptr<OutputFile> output_;
  std::vector<uint8_t> block_;
};

}  // namespace quillon
