// What the numbers mean that tell what is wrong with the provider library itself.
#pragma once

#include <cstdint>
#include <string>

namespace quillon {

// Empty for any other number, which is the library's.
std::string VinesErrorText(std::int32_t number);

}  // namespace quillon
