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

}  // namespace

std::string DecodeMessageFile(std::span<const std::uint8_t> bytes, CodePage& codePage) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (text.starts_with(kUtf8Mark)) return std::string(text.substr(kUtf8Mark.size()));
  if (text.starts_with(kUtf16LittleMark)) return DecodeUtf16(text.substr(2), true);
  if (text.starts_with(kUtf16BigMark)) return DecodeUtf16(text.substr(2), false);
  // Text in an ANSI code page is hardly ever that by chance.
  return IsUtf8(text) ? std::string(text) : codePage.ToText(text);
}

std::vector<std::uint8_t> EncodeMessageFile(const std::string& text, CodePage& codePage) {
  const auto ansi = codePage.ToBytes(text);
  std::vector<std::uint8_t> bytes(ansi.begin(), ansi.end());
  // What looks like a mark or like UTF-8 would be read back as something else.
  if (DecodeMessageFile(bytes, codePage) == text) return bytes;
  const auto marked = std::string(kUtf8Mark) + text;
  return {marked.begin(), marked.end()};
}

}  // namespace quillon
