#include "codec/PartHeader.h"

#include <algorithm>
#include <array>

#include "codec/ContentField.h"
#include "codec/TextReader.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::array<std::string_view, 4> kFieldNames{
    "CONTENT-TYPE",
    "CONTENT-TRANSFER-ENCODING",
    "CONTENT-DISPOSITION",
    "CONTENT-ID",
};

constexpr std::string_view kWebForm = "APPLICATION/X-WWW-FORM-URLENCODED";

struct TypeRow {
  std::string_view contains;
  std::int16_t type;
};

// The first match decides.
constexpr std::array kTypes{
    TypeRow{"MULTIPART/ALTERNATIVE", mime_type::kAlternative},
    TypeRow{"MULTIPART/RELATED", mime_type::kRelated},
    TypeRow{"MULTIPART/DIGEST", mime_type::kDigest},
    TypeRow{"MULTIPART", mime_type::kMultipart},
    TypeRow{"MESSAGE/", mime_type::kMessage},
    TypeRow{"TEXT", mime_type::kText},
};

struct EncodingRow {
  std::string_view contains;
  std::int16_t encoding;
};

constexpr std::array kEncodings{
    EncodingRow{"BASE64", mime_encoding::kBase64},
    EncodingRow{"QUOTED", mime_encoding::kQuotedPrintable},
    EncodingRow{"UUE", mime_encoding::kUuencode},
    EncodingRow{"X-UU", mime_encoding::kUuencode},
};

struct ExtensionRow {
  std::string_view type;
  std::string_view extension;
};

constexpr std::array kExtensions{
    ExtensionRow{"TEXT/PLAIN", "TXT"},
    ExtensionRow{"TEXT/HTML", "HTM"},
    ExtensionRow{"TEXT/CSV", "CSV"},
    ExtensionRow{"TEXT/XML", "XML"},
    ExtensionRow{"TEXT/CALENDAR", "ICS"},
    ExtensionRow{"TEXT/VCARD", "VCF"},
    ExtensionRow{"TEXT/X-VCARD", "VCF"},
    ExtensionRow{"TEXT/RTF", "RTF"},
    ExtensionRow{"TEXT/RICHTEXT", "RTF"},
    ExtensionRow{"TEXT/ENRICHED", "ENR"},
    ExtensionRow{"TEXT/CSS", "CSS"},
    ExtensionRow{"TEXT/RFC822-HEADERS", "TXT"},
    ExtensionRow{"MESSAGE/RFC822", "EML"},
    ExtensionRow{"MESSAGE/DELIVERY-STATUS", "TXT"},
    ExtensionRow{"MESSAGE/DISPOSITION-NOTIFICATION", "TXT"},
    ExtensionRow{"IMAGE/JPEG", "JPG"},
    ExtensionRow{"IMAGE/PJPEG", "JPG"},
    ExtensionRow{"IMAGE/GIF", "GIF"},
    ExtensionRow{"IMAGE/PNG", "PNG"},
    ExtensionRow{"IMAGE/BMP", "BMP"},
    ExtensionRow{"IMAGE/TIFF", "TIF"},
    ExtensionRow{"IMAGE/SVG+XML", "SVG"},
    ExtensionRow{"IMAGE/WEBP", "WEBP"},
    ExtensionRow{"AUDIO/MPEG", "MP3"},
    ExtensionRow{"AUDIO/WAV", "WAV"},
    ExtensionRow{"AUDIO/X-WAV", "WAV"},
    ExtensionRow{"VIDEO/MPEG", "MPG"},
    ExtensionRow{"VIDEO/MP4", "MP4"},
    ExtensionRow{"VIDEO/QUICKTIME", "MOV"},
    ExtensionRow{"APPLICATION/PDF", "PDF"},
    ExtensionRow{"APPLICATION/RTF", "RTF"},
    ExtensionRow{"APPLICATION/ZIP", "ZIP"},
    ExtensionRow{"APPLICATION/X-ZIP-COMPRESSED", "ZIP"},
    ExtensionRow{"APPLICATION/GZIP", "GZ"},
    ExtensionRow{"APPLICATION/JSON", "JSON"},
    ExtensionRow{"APPLICATION/XML", "XML"},
    ExtensionRow{"APPLICATION/POSTSCRIPT", "PS"},
    ExtensionRow{"APPLICATION/MSWORD", "DOC"},
    ExtensionRow{"APPLICATION/VND.MS-EXCEL", "XLS"},
    ExtensionRow{"APPLICATION/VND.MS-POWERPOINT", "PPT"},
    ExtensionRow{"APPLICATION/VND.OPENXMLFORMATS-OFFICEDOCUMENT.WORDPROCESSINGML.DOCUMENT", "DOCX"},
    ExtensionRow{"APPLICATION/VND.OPENXMLFORMATS-OFFICEDOCUMENT.SPREADSHEETML.SHEET", "XLSX"},
    ExtensionRow{"APPLICATION/VND.OPENXMLFORMATS-OFFICEDOCUMENT.PRESENTATIONML.PRESENTATION",
                 "PPTX"},
    ExtensionRow{"APPLICATION/ICS", "ICS"},
    ExtensionRow{"APPLICATION/PKCS7-SIGNATURE", "P7S"},
    ExtensionRow{"APPLICATION/X-PKCS7-SIGNATURE", "P7S"},
    ExtensionRow{"APPLICATION/PKCS7-MIME", "P7M"},
    ExtensionRow{"APPLICATION/X-PKCS7-MIME", "P7M"},
    ExtensionRow{"APPLICATION/PGP-SIGNATURE", "ASC"},
};

// The media type of a Content-Type value, in upper case: parameters are not matched, or a file name
// could change what a part is.
std::string MediaType(std::string_view contentType) {
  auto type = UpperAscii(contentType.substr(0, contentType.find(';')));
  std::erase_if(type, [](char c) { return c == ' ' || c == '\t'; });
  return type;
}

std::string_view WithoutTrailingBlanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(" \t") + 1);
}

// What somebody has written, as far as it is one line that can be compared.
std::string LabelText(std::string_view text) {
  constexpr std::size_t kLongest = 255;
  std::string label(text.substr(0, text.size() <= kLongest ? text.size() : 0));
  const bool isVisible = std::all_of(label.begin(), label.end(), [](char c) {
    return static_cast<unsigned char>(c) > ' ' && c != 127;
  });
  return isVisible ? label : std::string();
}

// RFC 2392, section 2: without the brackets around it.
std::string BareContentId(std::string_view field) {
  auto id = WithoutTrailingBlanks(field);
  id.remove_prefix(std::min(id.find_first_not_of(" \t"), id.size()));
  if (id.starts_with('<') && id.ends_with('>')) id = id.substr(1, id.size() - 2);
  return LabelText(id);
}

std::int16_t TypeOf(const std::string& mediaType) {
  for (const auto& row : kTypes) {
    if (mediaType.find(row.contains) != std::string::npos) return row.type;
  }
  return mime_type::kOther;
}

bool Contains(const std::string& text, std::string_view part) {
  return text.find(part) != std::string::npos;
}

// RFC 5322, sections 2.2 and 4.5: a name of visible characters, blanks perhaps, a colon.
bool IsField(std::string_view line) {
  const auto colon = line.find(':');
  if (colon == std::string_view::npos) return false;
  const auto name = WithoutTrailingBlanks(line.substr(0, colon));
  return !name.empty() &&
         std::all_of(name.begin(), name.end(), [](char c) { return c > ' ' && c < 127; });
}

}  // namespace

std::string* PartHeader::FieldOf(std::string_view line) {
  const auto colon = line.find(':');
  if (colon == std::string_view::npos) return nullptr;
  const auto name = Trim(line.substr(0, colon));
  for (std::size_t i = 0; i < kFieldCount; ++i) {
    if (!EqualsIgnoreCase(name, kFieldNames[i])) continue;
    if (seen_[i]) return nullptr;  // the first of a field counts
    seen_[i] = true;
    return &fields_[i];
  }
  return nullptr;
}

void PartHeader::Append(std::string_view text) {
  if (current_ == nullptr || current_->size() >= kMaximumFieldBytes) return;
  current_->append(text.substr(0, kMaximumFieldBytes - current_->size()));
}

void PartHeader::StartField(std::string_view line) {
  hasField_ = true;
  holds_ = false;
  Append(std::exchange(held_, {}));  // a fold after all
  current_ = FieldOf(line);
  if (current_ != nullptr) Append(line.substr(line.find(':') + 1));
}

// Some servers put the line that separates the messages of a mailbox file before the header.
bool PartHeader::BeginsHeader(std::string_view line) const {
  return ofMessage_ && size_ == 0 && line.starts_with("From ") &&
         line.find(':') != std::string_view::npos;
}

// False when there are too many.
bool PartHeader::Hold(std::string_view line, bool wholeLine, bool endsLine) {
  if (!holds_) {
    const bool blank = wholeLine && WithoutTrailingBlanks(line).empty();
    holds_ = blank || !hasField_;
    if (blank || !holds_) return true;
  }
  if (held_.size() + line.size() > kMaximumHeldBytes) return false;
  held_ += line;
  if (endsLine) held_ += "\r\n";
  return true;
}

PartHeader::Result PartHeader::Line(std::string_view line, bool endsLine) {
  const bool startsLine = std::exchange(atLineStart_, endsLine);
  const bool wholeLine = startsLine && endsLine;
  if (wholeLine && line.empty()) {
    const bool onlyBlanks = held_.find_first_not_of(" \t\r\n") == std::string::npos;
    if (onlyBlanks) held_.clear();
    return onlyBlanks ? Result::Ended : Result::Content;
  }
  const bool continues = !startsLine || line.starts_with(' ') || line.starts_with('\t');
  if (!continues && !IsField(line) && !BeginsHeader(line)) return Result::Content;
  if (size_ + line.size() + 2 > kMaximumHeaderBytes) return Result::Content;
  if (continues && !Hold(line, wholeLine, endsLine)) return Result::Content;
  size_ += line.size() + 2;
  if (!continues) {
    StartField(line);
  } else if (!holds_) {
    Append(line);
  }
  return Result::More;
}

clsMIMEPart PartHeader::Finish(bool inDigest, const TextReader& reader) {
  clsMIMEPart part;
  part.contentType = Trim(fields_[kType]);
  if (part.contentType.empty()) part.contentType = inDigest ? "message/rfc822" : "";
  const auto type = ParseContentField(part.contentType, reader);
  const auto disposition = ParseContentField(fields_[kDisposition], reader);
  if (!part.contentType.empty()) part.MType = TypeOf(MediaType(type.value));

  const auto encoding = UpperAscii(fields_[kEncoding]);
  for (const auto& row : kEncodings) {
    if (part.encoding == mime_encoding::kNone && Contains(encoding, row.contains)) {
      part.encoding = row.encoding;
    }
  }
  // RFC 2046, section 5.1.1: no boundary ends in blanks.
  part.Boundary = WithoutTrailingBlanks(type.Parameter("BOUNDARY"));
  // A multipart that does not say how its parts are told apart is read as text.
  if (mime_type::IsMultipart(part.MType) && part.Boundary.empty()) part.MType = mime_type::kText;
  for (const auto* name : {"FILENAME", "NAME"}) {
    const auto& field = name[0] == 'F' ? disposition : type;
    if (part.Name.empty() && !Trim(field.Parameter(name)).empty()) {
      part.Name = field.Parameter(name);
      part.NameType = name;
    }
  }
  // A browser's form that is mailed: its text is for the reader, whatever it is named.
  if (ofMessage_ && Contains(MediaType(type.value), kWebForm)) {
    part.MType = mime_type::kText;
    part.Name.clear();
    part.NameType.clear();
  }
  part.form.characterSet = Trim(type.Parameter("CHARSET"));
  part.form.flowed =
      MediaType(type.value) == "TEXT/PLAIN" && EqualsIgnoreCase(type.Parameter("FORMAT"), "flowed");
  part.form.deletesBlanks = EqualsIgnoreCase(type.Parameter("DELSP"), "yes");
  isAttachment_ = Contains(UpperAscii(disposition.value), "ATTACHMENT");
  label_.contentType = LabelText(LowerAscii(MediaType(type.value)));
  label_.contentId = BareContentId(reader.Unnamed(fields_[kId]));

  for (auto& field : fields_) field.clear();
  seen_ = {};
  current_ = nullptr;
  size_ = 0;
  ofMessage_ = false;
  atLineStart_ = true;
  hasField_ = false;
  holds_ = false;
  return part;
}

std::string ExtensionOfType(std::string_view contentType) {
  const auto type = MediaType(contentType);
  const auto* const row =
      std::find_if(kExtensions.begin(), kExtensions.end(),
                   [&](const ExtensionRow& candidate) { return candidate.type == type; });
  return row != kExtensions.end() ? std::string(row->extension) : std::string();
}

std::string TypeOfExtension(std::string_view fileName) {
  const auto dot = fileName.rfind('.');
  const auto extension =
      dot != std::string_view::npos ? UpperAscii(fileName.substr(dot + 1)) : std::string();
  const auto* const row =
      std::find_if(kExtensions.begin(), kExtensions.end(),
                   [&](const ExtensionRow& candidate) { return candidate.extension == extension; });
  const bool isKnown = row != kExtensions.end() && !row->type.starts_with("MESSAGE/");
  return LowerAscii(isKnown ? row->type : "APPLICATION/OCTET-STREAM");
}

std::string AlternativeName(std::string_view contentType) {
  const auto type = MediaType(contentType);
  if (Contains(type, "/ENRICHED")) return "ALTERNAT.ENR";
  if (Contains(type, "/RTF")) return "ALTERNAT.RTF";
  if (Contains(type, "/RICHTEXT-ZIPPED")) return "ALTERNAT.RTZ";
  if (Contains(type, "/RICHTEXT")) return "ALTERNAT.RTF";
  if (Contains(type, "/HTML")) return "ALTERNAT.HTM";
  const auto extension = ExtensionOfType(contentType);
  return "ALTERNAT." + (extension.empty() ? "DAT" : extension);
}

}  // namespace quillon
