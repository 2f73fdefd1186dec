// Where bytes of the wire and of ANSI files become text, and text such bytes.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

class CodePage {
 public:
  virtual ~CodePage() = default;

  // Every byte string has a text, and ToBytes of it gives the same bytes back when the code page
  // has one byte per character.
  virtual std::string ToText(std::string_view bytes) const = 0;

  // What the code page does not hold becomes its replacement character ('?'), never another one
  // that looks like it.
  virtual std::string ToBytes(std::string_view text) const = 0;
};

}  // namespace quillon
