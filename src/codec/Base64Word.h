// Base64 of RFC 4648, section 4, without line ends, as protocols say it in one word. Unlike what
// mail bodies are decoded with, this takes nothing that a correct encoder would not write.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillon {

std::string Base64Word(std::string_view bytes);

// None for a character outside the alphabet, a length that is no multiple of 4, padding in the
// wrong place, or bits that stand for nothing.
std::optional<std::string> BytesOfBase64Word(std::string_view word);

}  // namespace quillon
