// The text files of LoadMessageFromFile and SaveMessageToFile.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace quillon {

class CodePage;

// Reads UTF-8, UTF-16LE and UTF-16BE by their byte-order mark, and anything else as ANSI.
std::string DecodeMessageFile(std::span<const std::uint8_t> bytes, CodePage& codePage);

// ANSI when that holds the whole text, else UTF-8 with a byte-order mark.
std::vector<std::uint8_t> EncodeMessageFile(const std::string& text, CodePage& codePage);

}  // namespace quillon
