// An encoded file on its way out, block by block.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "net/SocketWriter.h"
#include "ports/FileSystem.h"

namespace quillon {

class EncodedFile final : public DataSource {
 public:
  // With `stuffDots` a line that begins with "." leaves with the dot doubled (RFC 5321, 4.5.2); the
  // file then begins at the start of a line. Base64 has no such lines.
  EncodedFile(FileSystem& files, const std::string& path, bool stuffDots);

  // Failed: the file cannot be opened or read.
  State Fill(std::string& block, std::size_t wanted) override;

 private:
  void StuffDots(std::string& block, std::size_t start);

  std::unique_ptr<File> file_;
  bool stuffDots_;
  bool atLineStart_ = true;
};

}  // namespace quillon
