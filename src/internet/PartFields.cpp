#include "internet/PartFields.h"

#include <algorithm>
#include <cstddef>

#include "codec/Parameter2231.h"
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

}  // namespace

std::string MultipartType(std::string_view subtype, std::string_view boundary) {
  return std::string("multipart/").append(subtype).append("; boundary=").append(boundary);
}

std::string TextType(std::string_view charset) {
  return "text/plain; charset=\"" + HeaderText(charset) + "\"";
}

std::string MultipartFields(std::string_view subtype, std::string_view boundary) {
  return Field("Content-Type", MultipartType(subtype, boundary)) + "\r\n";
}

std::string TextPartFields(std::string_view charset) {
  return Field("Content-Type", TextType(charset)) + Field("Content-Transfer-Encoding", "7bit") +
         "\r\n";
}

std::string AlternativeFields(std::string_view contentType, std::string_view charset) {
  return Field("Content-Type",
               HeaderText(contentType) + "; charset=\"" + HeaderText(charset) + "\"") +
         Field("Content-Transfer-Encoding", "base64") + "\r\n";
}

std::string AttachmentFields(const std::string& name, const CodePage& codePage) {
  const auto safe = SafeName(name);
  const auto quoted = QuotedValue(codePage.ToBytes(safe));
  const auto extended =
      IsAscii(safe) ? std::string() : ExtendedParameter("filename", safe, "utf-8");
  return Field("Content-Type", "application/octet-stream; name=" + quoted) +
         Field("Content-Transfer-Encoding", "base64") +
         Field("Content-Disposition", "attachment; filename=" + quoted + extended) + "\r\n";
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
