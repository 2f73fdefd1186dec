#pragma once

#include <string>
#include <vector>

namespace quillon::bench {

struct SplitResult {
  std::string body;
  std::vector<std::string> files;  // paths, in the order of the message
};

}  // namespace quillon::bench
