// Writing of encoded words, =?charset?B?...?= and =?charset?Q?...?= (RFC 2047).
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace quillon {

// Gives the bytes of UTF-8 text in some character set. Any part of the text, cut between
// characters, has bytes of its own: a set with shifts begins and ends each in ASCII.
using CharacterBytes = std::function<std::string(std::string_view text)>;

// Whether a header value cannot stand as it is: it is not all printable ASCII, could be taken for
// an encoded word, or has a word too long for a line.
bool NeedsEncodedWords(std::string_view text);

// The whole text as encoded words with one blank between them: each of 75 characters at most and
// with whole characters in it, all of them in the form that is the shorter one for the text. They
// can stand in a text and as a name before an address. `used` is what stands before them on their
// line; the first word is cut so that both fit, when that leaves it room.
std::string EncodeWords(std::string_view text, std::string_view charset,
                        const CharacterBytes& toBytes, std::size_t used = 1);

}  // namespace quillon
