// The description of one part of a MIME message (RFC 2045), as its header gives it.
#pragma once

#include <cstdint>
#include <string>

#include "codec/TextForm.h"

namespace quillon {

namespace mime_type {

inline constexpr std::int16_t kText = 0;  // also a part without a Content-Type
inline constexpr std::int16_t kMultipart = 1;
inline constexpr std::int16_t kAlternative = 2;  // a multipart of renderings of one content
inline constexpr std::int16_t kRelated = 3;      // a multipart of a root and what it refers to
inline constexpr std::int16_t kDigest = 4;       // a multipart of messages
inline constexpr std::int16_t kMessage = 5;
inline constexpr std::int16_t kOther = 6;

constexpr bool IsMultipart(std::int16_t type) noexcept {
  return type >= kMultipart && type <= kDigest;
}

}  // namespace mime_type

namespace mime_encoding {

inline constexpr std::int16_t kNone = 0;
inline constexpr std::int16_t kBase64 = 1;
inline constexpr std::int16_t kQuotedPrintable = 2;
inline constexpr std::int16_t kUuencode = 3;

}  // namespace mime_encoding

class clsMIMEPart {
 public:
  std::int16_t MType = mime_type::kText;
  std::int16_t encoding = mime_encoding::kNone;
  std::string Name;      // the file name, as text; the default name where the header gives none
  std::string NameType;  // the field that gave it: "FILENAME" or "NAME"; empty for a default name
  std::string Boundary;  // of a multipart, without quotes
  std::string contentType;      // the Content-Type value as received
  std::string Filespec;         // the file that holds the decoded part
  std::string EncodedFilespec;  // the file that holds the part as received; parts are decoded as
                                // they arrive, so that there is none

  TextForm form;  // of a part that is text

  void Clear() { *this = clsMIMEPart(); }
};

}  // namespace quillon
