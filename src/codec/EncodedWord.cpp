#include "codec/EncodedWord.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "codec/Base64.h"
#include "codec/CharacterSet.h"
#include "core/HexDigit.h"
#include "ports/CodePage.h"

namespace quillon {

namespace {

std::string DecodeQ(std::string text) {
  std::replace(text.begin(), text.end(), '_', ' ');
  return DecodeHexEscapes(text, '=');
}

std::string DecodeB(std::string_view text) {
  std::vector<std::uint8_t> bytes(Base64Decoder::Capacity(text.size()) + 3);
  Base64Decoder decoder;
  auto size = decoder.Decode({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()},
                             bytes.data());
  size += decoder.Finish(bytes.data() + size);
  return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)};
}

// One encoded word: its text and how long it is, "=?" and "?=" included.
struct Word {
  std::string text;
  std::size_t length = 0;
};

std::optional<Word> ParseWord(std::string_view value, const CodePage& codePage) {
  const auto charsetEnd = value.find('?', 2);
  if (charsetEnd == std::string_view::npos || charsetEnd + 2 >= value.size() ||
      value[charsetEnd + 2] != '?') {
    return std::nullopt;
  }
  // RFC 2231, section 5: a language may follow the character set.
  auto charset = value.substr(2, charsetEnd - 2);
  charset = charset.substr(0, charset.find('*'));
  if (charset.find_first_of(" \t\r\n") != std::string_view::npos) return std::nullopt;
  const auto start = charsetEnd + 3;
  const auto end = value.find("?=", start);
  if (end == std::string_view::npos) return std::nullopt;
  const auto encoded = value.substr(start, end - start);
  switch (value[charsetEnd + 1]) {
    case 'B':
    case 'b':
      return Word{TextFromCharacterSet(DecodeB(encoded), charset, codePage), end + 2};
    case 'Q':
    case 'q':
      return Word{TextFromCharacterSet(DecodeQ(std::string(encoded)), charset, codePage), end + 2};
    default:
      return std::nullopt;
  }
}

}  // namespace

std::string DecodeEncodedWords(std::string_view value, const CodePage& codePage) {
  std::string text;
  bool afterWord = false;
  // A word that does not end is looked for once only, so that a value of many of them takes linear
  // time.
  bool mayEnd = true;
  for (;;) {
    const auto start = mayEnd ? value.find("=?") : std::string_view::npos;
    const auto before = value.substr(0, start);
    const bool onlyBlanks = before.find_first_not_of(" \t\r\n") == std::string_view::npos;
    if (start == std::string_view::npos) return text + codePage.ToText(before);
    const auto word = ParseWord(value.substr(start), codePage);
    if (!word) {
      mayEnd = value.find("?=", start) != std::string_view::npos;
      text += codePage.ToText(value.substr(0, start + 2));
      value.remove_prefix(start + 2);
      afterWord = false;
      continue;
    }
    if (!(afterWord && onlyBlanks)) text += codePage.ToText(before);
    text += word->text;
    value.remove_prefix(start + word->length);
    afterWord = true;
  }
}

}  // namespace quillon
