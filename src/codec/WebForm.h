// Fields of a web page's mail-to form: the text of a message in the form name=value&name=value
// (URL-encoded).
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

namespace quillon {

class CodePage;

// Decoded values by field name, upper-cased and trimmed. A name that occurs twice keeps its first
// value.
using WebFormFields = std::unordered_map<std::string, std::string>;

// Adds the fields of the text. A pair without a name or without "=" is skipped; line ends around a
// pair do not belong to it.
void ParseWebForm(std::string_view formText, const CodePage& codePage, WebFormFields& fields);

// Replaces "%XX" by the character of that code in the ANSI code page, and then every "+" by a
// blank, an escaped plus sign ("%2B") included; trims the result. "%00" and "%" before anything but
// two hexadecimal digits are dropped with the two characters; a "%" too close to the end ends the
// decoding. The argument is consumed up to behind its last escape.
std::string DecodeFormValue(std::string_view& text, const CodePage& codePage);

}  // namespace quillon
