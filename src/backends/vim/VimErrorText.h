// The texts of VIM status numbers.
#pragma once

#include <cstdint>
#include <string>

namespace quillon {

// Empty for a number without a text.
std::string VimErrorText(std::int32_t number);

}  // namespace quillon
