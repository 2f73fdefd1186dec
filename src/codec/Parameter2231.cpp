#include "codec/Parameter2231.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace quillon {

namespace {

// Of an encoded value, so that a folded line has its usual length.
constexpr std::size_t kSectionLength = 54;

bool StandsForItself(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '.' || c == '_';
}

}  // namespace

std::string QuotedValue(std::string_view value) {
  std::string quoted = "\"";
  for (const char c : value) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted += '"';
}

std::string ExtendedParameter(std::string_view name, std::string_view bytes,
                              std::string_view charset) {
  static constexpr std::string_view kHex = "0123456789ABCDEF";
  std::vector<std::string> sections = {std::string(charset) + "''"};
  for (const char c : bytes) {
    if (sections.back().size() >= kSectionLength) sections.emplace_back();
    if (StandsForItself(c)) {
      sections.back() += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    sections.back() += {'%', kHex[byte >> 4U], kHex[byte & 0xFU]};
  }
  std::string text;
  for (std::size_t number = 0; number < sections.size(); ++number) {
    text.append(";\r\n ").append(name);
    if (sections.size() > 1) text += "*" + std::to_string(number);
    text.append("*=").append(sections[number]);
  }
  return text;
}

std::string OldParameter(std::string_view name, std::string_view text, std::string_view charset,
                         const CharacterBytes& toBytes) {
  // With the blank, the equals sign and both quotes.
  const auto used = name.size() + 4;
  const auto words = EncodeWords(text, charset, toBytes, used);
  auto parameter = std::string(";\r\n ").append(name).append("=\"");
  for (const char c : words) {
    if (c == ' ') parameter += "\r\n";
    parameter += c;
  }
  return parameter += '"';
}

}  // namespace quillon
