#include "codec/EncodedWordWriter.h"

#include <algorithm>

#include "codec/Base64Word.h"
#include "codec/FieldFold.h"

namespace quillon {

namespace {

constexpr std::size_t kLongestWord = 75;  // RFC 2047, section 2
constexpr std::size_t kMarks = 7;         // "=?", "?Q?" and "?="

// Less for the first word would make it more than one of a few characters.
constexpr std::size_t kLeastRoom = 20;

// Longer than any word that somebody reads, and short enough for a line of 998 characters.
constexpr std::size_t kLongestPlain = 900;

// Those that a name before an address can hold (RFC 2047, section 5, rule 3).
bool StandsForItself(char c) {
  constexpr std::string_view kOthers = "!*+-/";
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         kOthers.find(c) != std::string_view::npos;
}

std::size_t SizeInQ(std::string_view bytes) {
  const auto plain = std::count_if(bytes.begin(), bytes.end(),
                                   [](char c) { return c == ' ' || StandsForItself(c); });
  return bytes.size() * 3 - static_cast<std::size_t>(plain) * 2;
}

std::size_t SizeInB(std::string_view bytes) {
  return (bytes.size() + 2) / 3 * 4;
}

std::string InQ(std::string_view bytes) {
  static constexpr std::string_view kHex = "0123456789ABCDEF";
  std::string text;
  text.reserve(bytes.size() * 3);
  for (const char c : bytes) {
    if (c == ' ') {
      text += '_';
    } else if (StandsForItself(c)) {
      text += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      text += {'=', kHex[byte >> 4U], kHex[byte & 0xFU]};
    }
  }
  return text;
}

// Where the first character of UTF-8 text ends that begins at `at`.
std::size_t NextCharacter(std::string_view text, std::size_t at) {
  ++at;
  while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U) ++at;
  return at;
}

}  // namespace

bool NeedsEncodedWords(std::string_view text) {
  std::size_t run = 0;
  for (const char c : text) {
    const bool blank = c == ' ' || c == '\t';
    run = blank ? 0 : run + 1;
    if ((!blank && (c < ' ' || c > '~')) || run > kLongestPlain) return true;
  }
  return text.find("=?") != std::string_view::npos;
}

std::string EncodeWords(std::string_view text, std::string_view charset,
                        const CharacterBytes& toBytes, std::size_t used) {
  const auto whole = toBytes(text);
  const bool inQ = SizeInQ(whole) <= SizeInB(whole);
  const auto start = std::string("=?").append(charset).append(inQ ? "?Q?" : "?B?");
  const auto marks = charset.size() + kMarks;
  auto room = kLongestWord - marks;
  if (used + marks + kLeastRoom <= kFieldColumns) {
    room = std::min(room, kFieldColumns - used - marks);
  }
  std::string words;
  words.reserve(whole.size() * 2 + 2 * marks);
  while (!text.empty()) {
    std::string bytes;
    std::size_t taken = 0;
    for (auto end = NextCharacter(text, 0);; end = NextCharacter(text, end)) {
      auto more = toBytes(text.substr(0, end));
      if (taken != 0 && (inQ ? SizeInQ(more) : SizeInB(more)) > room) break;
      bytes = std::move(more);
      taken = end;
      if (end == text.size()) break;
    }
    if (!words.empty()) words += ' ';
    words.append(start).append(inQ ? InQ(bytes) : Base64Word(bytes)).append("?=");
    text.remove_prefix(taken);
    room = kLongestWord - marks;
  }
  return words;
}

}  // namespace quillon
