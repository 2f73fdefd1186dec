#include "internet/PartFields.h"

#include <algorithm>
#include <cstddef>

#include "codec/Parameter2231.h"
#include "internet/EncodedField.h"
#include "net/WireText.h"

namespace quillon {

namespace {

// No file system has longer names; with every character escaped a line stays below the 998
// characters that RFC 5322, section 2.1.1, allows.
constexpr std::size_t kLongestName = 400;

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

bool IsAscii(std::string_view text) {
  return std::none_of(text.begin(), text.end(),
                      [](char c) { return (static_cast<unsigned char>(c) & 0x80U) != 0; });
}

std::string Field(std::string_view name, std::string_view value) {
  return std::string(name).append(": ").append(value).append("\r\n");
}

std::string FieldsOf(const PartFileLabel& file, std::string_view name, std::string_view fileName) {
  const auto& id = file.contentId;
  return Field("Content-Type", HeaderText(file.contentType).append(name)) +
         Field("Content-Transfer-Encoding", "base64") +
         (id.empty() ? std::string() : Field("Content-ID", "<" + HeaderText(id) + ">")) +
         Field("Content-Disposition",
               std::string(id.empty() ? "attachment" : "inline").append(fileName)) +
         "\r\n";
}

}  // namespace

std::string MultipartType(std::string_view subtype, std::string_view boundary, bool quoted) {
  auto type = std::string("multipart/").append(subtype).append("; boundary=");
  return type.append(quoted ? QuotedValue(boundary) : std::string(boundary));
}

std::string TextType(std::string_view charset) {
  return "text/plain; charset=\"" + HeaderText(charset) + "\"";
}

std::string MultipartFields(std::string_view subtype, std::string_view boundary, bool quoted) {
  return Field("Content-Type", MultipartType(subtype, boundary, quoted)) + "\r\n";
}

std::string TextPartFields(std::string_view charset, std::string_view encoding) {
  return Field("Content-Type", TextType(charset)) + Field("Content-Transfer-Encoding", encoding) +
         "\r\n";
}

std::string AlternativeFields(std::string_view contentType, std::string_view charset,
                              std::string_view encoding) {
  auto type = HeaderText(contentType);
  if (!charset.empty()) type += "; charset=\"" + HeaderText(charset) + "\"";
  return Field("Content-Type", type) + Field("Content-Transfer-Encoding", encoding) + "\r\n";
}

std::string FileFields(const PartFileLabel& file, const CodePage& codePage) {
  const auto safe = SafeName(file.name);
  const auto quoted = QuotedValue(codePage.ToBytes(safe));
  const auto extended =
      IsAscii(safe) ? std::string() : ExtendedParameter("filename", safe, "utf-8");
  return FieldsOf(file, "; name=" + quoted, "; filename=" + quoted + extended);
}

std::string FileFields(const PartFileLabel& file, const TextEncoder& encoder) {
  constexpr std::string_view kWhat = "The name of an attachment";
  const auto safe = SafeName(file.name);
  if (IsAscii(safe)) {
    const auto quoted = QuotedValue(safe);
    return FieldsOf(file, ";\r\n name=" + quoted, ";\r\n filename=" + quoted);
  }
  const auto bytes = EncodedBytes(safe, encoder, kWhat);
  const auto charset = encoder.Label(safe);
  const auto toBytes = [&](std::string_view part) { return EncodedBytes(part, encoder, kWhat); };
  return FieldsOf(file, OldParameter("name", safe, charset, toBytes),
                  ExtendedParameter("filename", bytes, charset));
}

std::string SafeName(std::string_view name) {
  std::string safe;
  for (const char c : name) {
    if (static_cast<unsigned char>(c) >= ' ' && c != '\x7F') safe += c;
  }
  if (safe.size() <= kLongestName) return safe;
  auto end = kLongestName;
  while (end > 0 && IsContinuation(safe[end])) --end;
  return safe.substr(0, end);
}

}  // namespace quillon
