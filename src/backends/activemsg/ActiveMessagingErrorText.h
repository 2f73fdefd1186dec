// The texts of Active Messaging error numbers: the Simple MAPI ones and the library's extended ones
// (100 to 171).
#pragma once

#include <cstdint>
#include <string>

namespace quillon {

// Empty for a number without a text.
std::string ActiveMessagingErrorText(std::int32_t number);

}  // namespace quillon
