// Hears what a session is doing.
#pragma once

#include <cstdint>
#include <string_view>

namespace quillon {

class SessionListener {
 public:
  virtual ~SessionListener() = default;
  // In the words that a user may see.
  virtual void OnStatus(std::string_view text) = 0;
  // Bytes or messages; `total` is 0 while it is not known, `message` its number in the mailbox.
  virtual void OnProgress(std::uint64_t done, std::uint64_t total, std::uint32_t message) = 0;
};

}  // namespace quillon
