// The names of files inside a ZIP archive.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quillon {

class ZipNames {
 public:
  // The file name of the path, valid UTF-8 whatever the system had; what cannot be becomes U+FFFD.
  // A name that was given out before, in whatever case of the letters A to Z, gets a number in
  // front of its extension: "report.txt", then "report (2).txt".
  std::string NameFor(std::string_view path);

 private:
  std::unordered_map<std::string, uint32_t> nextNumber_;  // by the name in capital letters
};

}  // namespace quillon
