// Names of people, compared without regard to case.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

// The text in small letters: those of the Latin, Greek and Cyrillic alphabets, as far as upper and
// lower case stand at regular distances. Other characters stay as they are.
std::string FoldedName(std::string_view text);

}  // namespace quillon
