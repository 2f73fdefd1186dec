// Host and domain names with letters of other scripts, in the form that DNS and every mail server
// take (RFC 5890, A-labels).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillon {

// Each label that is not ASCII as "xn--" and its Punycode (RFC 3492), of lower-case letters:
// Latin, Greek and Cyrillic ones are made that. Nothing else is mapped, so letters that can be
// written in two ways have to be composed ones. None for a label that is empty or too long for DNS
// then, and for what is not UTF-8.
std::optional<std::string> AsciiDomain(std::string_view domain);

}  // namespace quillon
