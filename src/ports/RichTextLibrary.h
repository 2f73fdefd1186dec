// Stores the body of a message of Active Messaging as rich text.
#pragma once

#include <cstdint>
#include <string>

namespace quillon {

class RichTextLibrary {
 public:
  virtual ~RichTextLibrary() = default;

  // 0 for success; any other number, also when the library is missing, means that it was not
  // stored.
  virtual std::int32_t Write(const std::string& profile, const std::string& messageId,
                             const std::string& storeId, const std::string& text) = 0;
};

}  // namespace quillon
