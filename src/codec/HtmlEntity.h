// Character references of HTML: "&amp;", "&#8364;", "&#x20AC;".
#pragma once

#include <string>
#include <string_view>

namespace quillon {

// The text with its references replaced by their characters, as browsers do: one in a text may lack
// its ";", and numbers from 128 to 159 are those of Windows-1252. What is no reference stays.
std::string DecodeHtmlText(std::string_view text);

// The same of the value of an attribute, where a reference needs its ";": the address of a link may
// hold a "&copy=2".
std::string DecodeHtmlAttribute(std::string_view value);

}  // namespace quillon
