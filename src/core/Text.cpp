#include "core/Text.h"

namespace quillon {

std::string_view Trim(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string TrimmedCopy(std::string_view text) {
  return std::string(Trim(text));
}

std::string UpperAscii(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) c = UpperAscii(c);
  return upper;
}

std::string LowerAscii(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

std::vector<std::string> Split(std::string_view text, std::string_view delimiter) {
  std::vector<std::string> pieces;
  for (;;) {
    const auto end = delimiter.empty() ? std::string_view::npos : text.find(delimiter);
    pieces.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return pieces;
    text.remove_prefix(end + delimiter.size());
  }
}

std::string Join(const std::vector<std::string>& items, std::string_view delimiter) {
  std::string joined;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) joined += delimiter;
    joined += items[i];
  }
  return joined;
}

std::size_t Utf16Length(std::string_view text) {
  std::size_t units = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte & 0xC0U) != 0x80U) ++units;  // one for each sequence,
    if (byte >= 0xF0U) ++units;            // two for those beyond the basic plane
  }
  return units;
}

}  // namespace quillon
