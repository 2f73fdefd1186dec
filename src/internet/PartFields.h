// The header fields of the parts of an outgoing message, each group with the empty line behind it.
// Texts are bytes as they go out.
#pragma once

#include <string>
#include <string_view>

#include "codec/TextEncoder.h"
#include "ports/CodePage.h"

namespace quillon {

// The value of a Content-Type field; the boundary stands without quotes unless they are wanted.
std::string MultipartType(std::string_view subtype, std::string_view boundary, bool quoted);
std::string TextType(std::string_view charset);

std::string MultipartFields(std::string_view subtype, std::string_view boundary, bool quoted);
std::string TextPartFields(std::string_view charset, std::string_view encoding);
// Without a character set nothing is said of it.
std::string AlternativeFields(std::string_view contentType, std::string_view charset,
                              std::string_view encoding);
// A file that is a part.
struct PartFileLabel {
  std::string name;         // UTF-8
  std::string contentType;  // ASCII
  std::string contentId;    // ASCII; what an HTML text shows the file by. Empty: an attachment
};

// The name stands in quotes in the bytes of the code page; when it is not all ASCII, also as RFC
// 2231 has it, which keeps what the code page lacks.
std::string FileFields(const PartFileLabel& file, const CodePage& codePage);
// In a character set: as RFC 2231 has it, and for old readers as encoded words. ServerError 529:
// EncodedField.h.
std::string FileFields(const PartFileLabel& file, const TextEncoder& encoder);

// A name as it can stand in a header field or in the "begin" line of a uuencoded file: without
// control characters, and not too long for a line.
std::string SafeName(std::string_view name);

}  // namespace quillon
