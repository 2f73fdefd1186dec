// Recipient lists as clients write them: several recipients in one string.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillon {

// The recipients between the delimiters, trimmed, empty ones left out. A delimiter between the two
// characters of `brackets` ("<>"), or between double quotes, does not split; a bracket or quote
// that is never closed is plain text.
std::vector<std::string> SplitRecipients(std::string_view text, std::string_view delimiter,
                                         std::string_view brackets);

}  // namespace quillon
