// The values of Content-Type and Content-Disposition: a word and parameters (RFC 2045, section 5.1;
// RFC 2231).
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace quillon {

class TextReader;

struct ContentField {
  std::string value;                              // before the first ";", without comments, trimmed
  std::map<std::string, std::string> parameters;  // by upper-case name, as text

  // Empty when there is no such parameter.
  const std::string& Parameter(const std::string& upperName) const;
};

// Reads quoted strings, comments, continuations (name*0, name*1), character sets (name*) and
// encoded words. A value that is malformed is read as far as it makes sense: an unclosed quote ends
// with the field, a value with blanks needs no quotes.
ContentField ParseContentField(std::string_view field, const TextReader& reader);

}  // namespace quillon
