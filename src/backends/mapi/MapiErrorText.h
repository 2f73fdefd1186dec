// The texts of Simple MAPI error numbers. Unknown, ambiguous and invalid recipients share one text.
#pragma once

#include <cstdint>
#include <string>

namespace quillon {

// Empty for a number without a text.
std::string MapiErrorText(std::int32_t number);

}  // namespace quillon
