// Encoded words in header values: =?charset?B?...?= and =?charset?Q?...?= (RFC 2047), as senders
// really write them: within quotes, without a blank before or behind, with blanks inside, and cut
// in the middle of a character. Words that follow one another in one set are put together first,
// and white space between two words goes.
//
// What is malformed stays as it is. Bytes outside of words are UTF-8 or in the ANSI code page. A
// line end or NUL that a word holds becomes a blank, so that no text is two lines.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

class TextReader;

// Of a text, as a subject is.
std::string DecodeEncodedWords(std::string_view value, const TextReader& reader);

// Of a field of addresses. A word becomes a part of a name, whatever it says: with characters that
// mean something among addresses it stands in quotes. Between "<" and ">" there are no words.
std::string DecodeAddresses(std::string_view value, const TextReader& reader);

}  // namespace quillon
