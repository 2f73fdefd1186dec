// Small helpers for ASCII text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mailhost {

std::string ToUpper(std::string_view text);
bool EqualIgnoringCase(std::string_view a, std::string_view b);
bool StartsIgnoringCase(std::string_view text, std::string_view prefix);

// Without the blanks and tabs at both ends.
std::string_view Trim(std::string_view text);

// Takes the first word off `text`; the rest starts at the word after it.
std::string_view TakeWord(std::string_view& text);

// Decimal digits only, nothing else; empty when it is anything else or does not fit.
std::optional<std::uint64_t> ParseNumber(std::string_view text);

// The text with every byte that is not printable ASCII written as \xHH, so that it stays on one
// line.
std::string Printable(std::string_view text);

// The lines of `text`, without their LF and a CR before it. A last line without an end counts.
std::vector<std::string_view> SplitLines(std::string_view text);

}  // namespace mailhost
