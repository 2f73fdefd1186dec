// Texts in the zero-terminated fields of records.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "ports/CodePage.h"

namespace quillon {

// What of a text a field of `size` bytes takes, without the zero at its end: as many whole
// characters as fit, and nothing behind a NUL.
std::string FieldBytes(const CodePage& codePage, std::string_view text, std::size_t size);

}  // namespace quillon
