#include "codec/CharacterSet.h"

#include "core/Text.h"
#include "core/Utf8.h"
#include "ports/CodePage.h"

namespace quillon {

namespace {

std::string FromLatin1(std::string_view bytes) {
  std::u16string units;
  units.reserve(bytes.size());
  for (const char c : bytes) units += static_cast<char16_t>(static_cast<unsigned char>(c));
  return Utf8FromUtf16(units);
}

}  // namespace

std::string TextFromCharacterSet(std::string_view bytes, std::string_view name,
                                 const CodePage& codePage) {
  if (EqualsIgnoreCase(name, "utf-8") || EqualsIgnoreCase(name, "utf8")) {
    if (IsUtf8(bytes)) return std::string(bytes);
  } else if (EqualsIgnoreCase(name, "iso-8859-1")) {
    return FromLatin1(bytes);
  }
  return codePage.ToText(bytes);
}

}  // namespace quillon
