// What the header of a part says of how its text is written.
#pragma once

#include <string>

namespace quillon {

struct TextForm {
  std::string characterSet;    // as it is named; empty when it is not
  bool flowed = false;         // lines that end in a blank go on (RFC 3676)
  bool deletesBlanks = false;  // and that blank is none of the text
};

}  // namespace quillon
