// Addresses of SMF: "user@workgroup", or "user@host {NET/PO/USER}", with the name in a comment.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "backends/RecipientParts.h"

namespace quillon {

// The addresses of a field, in its bytes. A comma within a comment or braces does not separate.
// `name` is empty when there is no comment.
std::vector<RecipientParts> ParseSmfAddresses(std::string_view field);

// The address as it stands in a field. Brackets take the place of parentheses in a name, so that it
// stays one comment.
std::string FormatSmfAddress(const RecipientParts& parts);

// Whether the bytes can be an address: nothing in them that separates or ends it, and no question
// mark, which stands for what the code page lacks.
bool IsSmfAddress(std::string_view address);

}  // namespace quillon
