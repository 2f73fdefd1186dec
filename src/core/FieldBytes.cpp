#include "core/FieldBytes.h"

#include "core/Utf8.h"

namespace quillon {

std::string FieldBytes(const CodePage& codePage, std::string_view text, std::size_t size) {
  std::string bytes;
  while (!text.empty() && text.front() != '\0') {
    auto rest = text;
    TakeUtf8(rest);
    const auto character = codePage.ToBytes(text.substr(0, text.size() - rest.size()));
    if (bytes.size() + character.size() >= size) break;
    bytes += character;
    text = rest;
  }
  return bytes;
}

}  // namespace quillon
