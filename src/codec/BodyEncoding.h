// How a text is encoded so that any server carries it (RFC 2045, section 6).
#pragma once

#include <string>
#include <string_view>

namespace quillon {

struct EncodedBody {
  std::string_view encoding;  // the value of Content-Transfer-Encoding
  std::string text;           // ASCII; encoded, its lines end in CR LF and do not begin with "."
};

// "7bit" with the text as it is when it has ASCII alone, no line of more than 998 octets and none
// that is a single ".", which not every server keeps; else what is shorter of "quoted-printable"
// and "base64". Line ends are CR LF, CR or LF, and are CR LF once encoded.
EncodedBody EncodeBody(std::string bytes);

// One of them.
std::string EncodeQuotedPrintable(std::string_view bytes);

}  // namespace quillon
