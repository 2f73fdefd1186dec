#include "server/MessageFile.h"

#include <string_view>

#include "core/Utf8.h"
#include "ports/CodePage.h"

namespace quillon {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LittleMark = "\xFF\xFE";
constexpr std::string_view kUtf16BigMark = "\xFE\xFF";

// A last odd byte is dropped: it is half a character.
std::string DecodeUtf16(std::string_view bytes, bool littleEndian) {
  std::u16string units;
  units.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    units += static_cast<char16_t>(littleEndian ? second << 8U | first : first << 8U | second);
  }
  return Utf8FromUtf16(units);
}

bool StartsWithMark(std::string_view bytes) {
  return bytes.starts_with(kUtf8Mark) || bytes.starts_with(kUtf16LittleMark) ||
         bytes.starts_with(kUtf16BigMark);
}

}  // namespace

std::string DecodeMessageFile(std::span<const std::uint8_t> bytes, CodePage& codePage) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (text.starts_with(kUtf8Mark)) return std::string(text.substr(kUtf8Mark.size()));
  if (text.starts_with(kUtf16LittleMark)) return DecodeUtf16(text.substr(2), true);
  if (text.starts_with(kUtf16BigMark)) return DecodeUtf16(text.substr(2), false);
  return codePage.ToText(text);
}

std::vector<std::uint8_t> EncodeMessageFile(const std::string& text, CodePage& codePage) {
  auto bytes = codePage.ToBytes(text);
  // ANSI bytes that look like a byte-order mark would be read back as something else.
  if (codePage.ToText(bytes) != text || StartsWithMark(bytes)) {
    bytes = std::string(kUtf8Mark) + text;
  }
  return {bytes.begin(), bytes.end()};
}

}  // namespace quillon
