// Where decoded bytes go.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace quillon {

class ByteSink {
 public:
  virtual ~ByteSink() = default;
  virtual void Append(std::string_view bytes) = 0;
};

}  // namespace quillon
