#include "codec/zip/ZipNames.h"

#include "core/Text.h"
#include "core/Utf8.h"
#include "core/WholeFile.h"
#include "ports/FileSystem.h"

namespace quillon {
namespace {

constexpr bool IsHigh(char16_t unit) {
  return (unit & 0xFC00) == 0xD800;
}
constexpr bool IsLow(char16_t unit) {
  return (unit & 0xFC00) == 0xDC00;
}

// Windows takes names with unpaired surrogates, which UTF-8 has no form for.
std::string ValidUtf8(std::string_view text) {
  std::u16string units = Utf16FromUtf8(text);
  for (size_t i = 0; i < units.size(); ++i) {
    if (IsHigh(units[i]) && i + 1 < units.size() && IsLow(units[i + 1])) {
      ++i;
    } else if (IsHigh(units[i]) || IsLow(units[i])) {
      units[i] = u'\uFFFD';
    }
  }
  return Utf8FromUtf16(units);
}

std::string Numbered(const std::string& name, uint32_t number) {
  size_t dot = name.rfind('.');
  if (dot == std::string::npos || dot == 0) dot = name.size();
  return name.substr(0, dot) + " (" + std::to_string(number) + ")" + name.substr(dot);
}

}  // namespace

std::string ZipNames::NameFor(std::string_view path) {
  std::string name = ValidUtf8(FileNameOf(path));
  const auto [known, isNew] = nextNumber_.try_emplace(UpperAscii(name), 2);
  if (isNew) return name;
  uint32_t& number = known->second;
  for (;;) {
    std::string candidate = Numbered(name, number++);
    if (nextNumber_.try_emplace(UpperAscii(candidate), 2).second) return candidate;
  }
}

}  // namespace quillon
