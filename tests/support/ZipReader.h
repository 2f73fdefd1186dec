// Reads an archive from memory the way other programs do, and believes nothing that it can check.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quillon::testing {

struct ZippedFile {
  std::string name;
  std::string content;
  uint16_t method = 0;
  uint16_t flags = 0;
  uint16_t time = 0;
  uint16_t date = 0;
};

// The files in the order of the directory. Throws std::runtime_error for an archive that is not
// whole, whose records contradict each other, or whose content does not have its check sum. No
// ZIP64.
std::vector<ZippedFile> ReadZip(std::string_view archive, std::string_view password = {});

}  // namespace quillon::testing
