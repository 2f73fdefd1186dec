// Hears what the engine is doing, in the words that a user may see.
#pragma once

#include <string_view>

namespace quillon {

class StatusSink {
 public:
  virtual ~StatusSink() = default;
  virtual void OnStatus(std::string_view text) = 0;
};

}  // namespace quillon
