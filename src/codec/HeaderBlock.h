// The header of a message as one text of lines that end in CR LF.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

// The value of the first field of the name (in any case, with or without its colon), its folds
// joined by the blank they begin with, trimmed; the empty text when there is no such field.
std::string FindHeaderValue(std::string_view header, std::string_view name);

}  // namespace quillon
