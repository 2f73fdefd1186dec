// The character sets that the system can write.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillon {

class CharacterEncoder {
 public:
  virtual ~CharacterEncoder() = default;

  virtual bool Has(int codePage) const = 0;

  // The bytes of UTF-8 text in a set, which is named by the number that Windows gives its code
  // page. None when the system does not have the set, or when the set lacks a character: nothing
  // takes the place of what only looks alike.
  virtual std::optional<std::string> ToBytes(std::string_view text, int codePage) const = 0;
};

}  // namespace quillon
