// Recipient lists as clients write them: several recipients in one string.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillon {

// The recipients between the delimiters, trimmed, empty ones left out. A delimiter between the two
// characters of `brackets` ("<>"), or between double quotes, does not split; a bracket or quote
// that is never closed is plain text, and so is a quote within a word.
std::vector<std::string> SplitRecipients(std::string_view text, std::string_view delimiter,
                                         std::string_view brackets);

// Where the quoted name ends that has begun before `at`; a quote behind a backslash does not end
// it. npos when it never ends.
std::size_t QuoteEnd(std::string_view text, std::size_t at);

// Where the last "<" outside quotes stands, which begins the address; npos when there is none.
std::size_t LastBracket(std::string_view text);

// Whether a quoted name (RFC 5322, section 3.2.4) may begin here: at the start, or behind a blank.
constexpr bool BeginsWord(std::string_view text, std::size_t at) noexcept {
  return at == 0 || text[at - 1] == ' ' || text[at - 1] == '\t';
}

}  // namespace quillon
