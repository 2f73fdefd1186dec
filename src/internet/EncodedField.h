// What stands in header fields, in the character set of a message. Texts are UTF-8.
//
// Thrown: ServerError 529 for characters that the set lacks; the text names them and `what`.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "codec/TextEncoder.h"

namespace quillon {

std::string EncodedBytes(std::string_view text, const TextEncoder& encoder, std::string_view what);

// A text as it is, or as encoded words when it has to; `used` is what stands before it on its line.
std::string EncodedText(std::string_view text, const TextEncoder& encoder, std::string_view what,
                        std::size_t used);

// A recipient, "Name <address>" or an address alone, whose name becomes encoded words when it has
// to, and whose domain is ASCII.
std::string EncodedAddress(std::string_view recipient, const TextEncoder& encoder,
                           std::string_view what);

// A bare address with its domain in ASCII, as DomainLabels.h has it; as it is when there is none.
std::string WithAsciiDomain(std::string_view address);

}  // namespace quillon
