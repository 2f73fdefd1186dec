// What a server says, as far as anybody may see it.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

// With "****" wherever the secret stands in it; an empty secret is none.
std::string WithoutSecret(std::string_view text, std::string_view secret);

// For an error text or a value that a client reads: as long as the longest reply that the protocols
// allow, and each run of control characters a blank.
std::string ServerWords(std::string_view text);

}  // namespace quillon
