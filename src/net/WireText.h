// What may go out inside a line: nothing that ends the line or hides in it.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

// Whether the text is free of CR, LF and NUL.
bool IsWireSafe(std::string_view text);

// Throws ServerError 529 when the text holds CR, LF or NUL; the error names `what`, never the text.
void RequireWireSafe(std::string_view text, std::string_view what);

// A header field value: each run of CR, LF and NUL becomes one blank, so no value can start another
// field.
std::string HeaderText(std::string_view value);

}  // namespace quillon
