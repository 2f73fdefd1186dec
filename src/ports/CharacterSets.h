// The character sets that the system has tables of.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillon {

class CharacterSets {
 public:
  virtual ~CharacterSets() = default;

  // The text of bytes in a set, which is named by the number that Windows gives its code page. None
  // when the system does not have the set, or when some of the bytes are no characters of it.
  virtual std::optional<std::string> ToText(std::string_view bytes, int codePage) const = 0;
};

}  // namespace quillon
