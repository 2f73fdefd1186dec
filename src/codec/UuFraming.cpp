#include "codec/UuFraming.h"

#include <algorithm>
#include <charconv>

#include "codec/UuLines.h"
#include "core/WholeFile.h"
#include "ports/FileSystem.h"

namespace quillon {
namespace {

constexpr std::string_view kBegin = "begin ";
constexpr std::string_view kBeginBase64 = "begin-base64 ";
constexpr std::string_view kMode = "644 ";

std::string_view WithoutTrailingBlanks(std::string_view text) {
  const size_t last = text.find_last_not_of(" \t\r");
  return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

bool IsOctalMode(std::string_view word) {
  return (word.size() == 3 || word.size() == 4) &&
         word.find_first_not_of("01234567") == std::string_view::npos;
}

// `rest` is what follows "begin ": a word and, after blanks, a name.
UuBegin SplitBegin(std::string_view rest) {
  rest = WithoutTrailingBlanks(rest);
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  const std::string_view mode = rest.substr(0, rest.find(' '));
  rest.remove_prefix(mode.size());
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  return {std::string(mode), std::string(rest), false};
}

// The name as it goes into a line: lower case (the letters of Latin-1, in UTF-8), control
// characters replaced.
std::string NameForLine(std::string_view inputPath) {
  std::string name(FileNameOf(inputPath));
  bool afterC3 = false;
  for (char& c : name) {
    const auto byte = static_cast<unsigned char>(c);
    const bool latinCapital = afterC3 && byte >= 0x80 && byte <= 0x9E && byte != 0x97;
    if ((byte >= 'A' && byte <= 'Z') || latinCapital) c = static_cast<char>(byte + 0x20);
    if (byte < 0x20 || byte == 0x7F) c = '_';
    afterC3 = byte == 0xC3;
  }
  return name;
}

// How many characters follow a length character that stands for up to 63 bytes.
size_t UuCharacters(char lengthCharacter) {
  const size_t length = UuLineLength(static_cast<uint8_t>(lengthCharacter)) % 64;
  return (length + 2) / 3 * 4;
}

// Reads digits and a word after them off the start of the text.
bool TakeNumber(std::string_view& text, std::string_view word, uint64_t& number) {
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
  if (parsed.ec != std::errc()) return false;
  text.remove_prefix(static_cast<size_t>(parsed.ptr - text.data()));
  if (!text.starts_with(word)) return false;
  text.remove_prefix(word.size());
  return true;
}

}  // namespace

std::optional<UuBegin> ParseUuBegin(std::string_view line) {
  const bool base64 = line.starts_with(kBeginBase64);
  if (!base64 && !line.starts_with(kBegin)) return std::nullopt;
  UuBegin begin = SplitBegin(line.substr(base64 ? kBeginBase64.size() : kBegin.size()));
  if (!IsOctalMode(begin.mode)) return std::nullopt;
  begin.base64 = base64;
  return begin;
}

std::optional<UuBegin> FindUuBegin(std::string_view text) {
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find_first_of("\r\n", start), text.size());
    if (auto begin = ParseUuBegin(text.substr(start, end - start))) return begin;
    start = end + 1;
  }
  const size_t found = text.find(kBegin);
  if (found == std::string_view::npos) return std::nullopt;
  const std::string_view rest = text.substr(found + kBegin.size());
  return SplitBegin(rest.substr(0, rest.find_first_of("\r\n")));
}

std::string UuBeginLine(std::string_view inputPath) {
  std::string line(kBegin);
  line += kMode;
  line += NameForLine(inputPath);
  line += "\r\n";
  return line;
}

std::string_view UuTrailer(bool graveAccent) {
  return graveAccent ? std::string_view("`\r\nend\r\n") : std::string_view("\r\nend\r\n");
}

bool IsUuEnd(std::string_view line) {
  return WithoutTrailingBlanks(line) == "end";
}

std::string UuSectionLine(uint64_t number, uint64_t count, std::string_view inputPath) {
  return "section " + std::to_string(number) + " of " + std::to_string(count) + " of file " +
         NameForLine(inputPath) + "\r\n";
}

std::optional<UuSection> ParseUuSection(std::string_view line) {
  constexpr std::string_view kSection = "section ";
  constexpr std::string_view kFile = "file ";
  if (!line.starts_with(kSection)) return std::nullopt;
  line.remove_prefix(kSection.size());
  UuSection section;
  if (!TakeNumber(line, " of ", section.number) || !TakeNumber(line, " of ", section.count)) {
    return std::nullopt;
  }
  const size_t file = line.find(kFile);
  if (file == std::string_view::npos) return std::nullopt;
  if (section.number == 0 || section.number > section.count) return std::nullopt;
  section.fileName = WithoutTrailingBlanks(line.substr(file + kFile.size()));
  return section;
}

bool LooksLikeUuData(std::string_view line) {
  if (line.empty() || line[0] <= ' ' || line[0] > '`') return false;
  // Some encoders put a checksum character at the end of a line.
  if (line.size() > 1 + UuCharacters(line[0]) + 1) return false;
  return std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '`'; });
}

bool IsWholeUuLine(std::string_view line) {
  return line.size() >= 1 + UuCharacters(line[0]);
}

}  // namespace quillon
