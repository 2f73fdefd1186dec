#pragma once

#include <string>
#include <vector>

namespace quillon::bench {

// Texts in UTF-8.
struct SplitResult {
  std::string subject;
  std::string from;
  std::string to;
  std::string body;
  std::vector<std::string> files;  // paths, in the order of the message
};

}  // namespace quillon::bench
