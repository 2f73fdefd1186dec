#include "codec/ContentField.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

#include "codec/CharacterSet.h"
#include "codec/EncodedWord.h"
#include "core/HexDigit.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::size_t kMaximumParameters = 1000;

std::string_view Stripped(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// The end of a comment that starts at `at`, behind its last ")"; npos when it never closes.
std::size_t CommentEnd(std::string_view text, std::size_t at) {
  std::size_t depth = 0;
  for (; at < text.size(); ++at) {
    if (text[at] == '\\') {
      ++at;
    } else if (text[at] == '(') {
      ++depth;
    } else if (text[at] == ')' && --depth == 0) {
      return at + 1;
    }
  }
  return std::string_view::npos;
}

// One piece of a field up to the next ";": the text with quotes and comments resolved.
struct Piece {
  std::string text;        // blanks at its end belong to a quoted string
  std::size_t length = 0;  // of what was read, the ";" included
};

void AppendQuoted(std::string_view field, std::size_t& at, std::string& text) {
  for (++at; at < field.size() && field[at] != '"'; ++at) {
    // A backslash is kept unless it escapes: senders write Windows paths without escaping them.
    const bool escapes = field[at] == '\\' && at + 1 < field.size() &&
                         (field[at + 1] == '"' || field[at + 1] == '\\');
    if (escapes) ++at;
    text += field[at];
  }
  if (at < field.size()) ++at;
}

Piece ReadPiece(std::string_view field) {
  Piece piece;
  std::size_t at = 0;
  bool openComment = false;  // one that never closes is looked for once only
  bool isParameter = false;
  std::size_t quotedEnd = 0;
  while (at < field.size() && field[at] != ';') {
    if (field[at] == '"') {
      AppendQuoted(field, at, piece.text);
      quotedEnd = piece.text.size();
      continue;
    }
    if (field[at] == '(' && !openComment) {
      const auto end = CommentEnd(field, at);
      openComment = end == std::string_view::npos;
      const auto next = openComment ? end : field.find_first_not_of(kBlanks, end);
      // In a bare file name like "report (1).pdf" the brackets are part of the name.
      if (!openComment && (next == std::string_view::npos || field[next] == ';' ||
                           field[next] == '(' || !isParameter)) {
        at = end;
        continue;
      }
    }
    isParameter = isParameter || field[at] == '=';
    piece.text += field[at++];
  }
  piece.length = at < field.size() ? at + 1 : at;
  const auto last = piece.text.find_last_not_of(kBlanks);
  piece.text.resize(std::max(quotedEnd, last == std::string::npos ? 0 : last + 1));
  return piece;
}

std::string PercentDecoded(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && HexDigit(text[i + 1]) >= 0 &&
        HexDigit(text[i + 2]) >= 0) {
      bytes += static_cast<char>(HexDigit(text[i + 1]) * 16 + HexDigit(text[i + 2]));
      i += 2;
    } else {
      bytes += text[i];
    }
  }
  return bytes;
}

// A parameter name taken apart: "FILENAME*1*" is section 1 of FILENAME, in extended form.
struct ParameterName {
  std::string base;
  std::size_t section = 0;
  bool hasSection = false;
  bool extended = false;
};

ParameterName ParseName(std::string_view name) {
  ParameterName parsed;
  auto rest = Stripped(name);
  if (rest.ends_with('*')) {
    parsed.extended = true;
    rest.remove_suffix(1);
  }
  const auto star = rest.find('*');
  if (star != std::string_view::npos) {
    const auto digits = rest.substr(star + 1);
    const auto* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, parsed.section);
    parsed.hasSection = error == std::errc() && stop == end;
    if (parsed.hasSection) rest = rest.substr(0, star);
  }
  parsed.base = UpperAscii(rest);
  return parsed;
}

// The sections of one parameter that have come so far.
struct Sections {
  struct Section {
    std::string value;
    bool extended = false;
  };
  std::map<std::size_t, Section> byNumber;
};

std::string JoinSections(const Sections& sections, const CodePage& codePage) {
  std::string bytes;
  std::string charset;
  std::size_t expected = 0;
  for (const auto& [number, section] : sections.byNumber) {
    if (number != expected++) break;  // a gap: what follows belongs to nothing
    std::string_view value = section.value;
    if (section.extended && number == 0) {
      const auto first = value.find('\'');
      const auto second = first == std::string_view::npos ? first : value.find('\'', first + 1);
      if (second != std::string_view::npos) {
        charset = value.substr(0, first);
        value.remove_prefix(second + 1);
      }
    }
    bytes += section.extended ? PercentDecoded(value) : std::string(value);
  }
  return TextFromCharacterSet(bytes, charset, codePage);
}

}  // namespace

const std::string& ContentField::Parameter(const std::string& upperName) const {
  static const std::string kNone;
  const auto found = parameters.find(upperName);
  return found != parameters.end() ? found->second : kNone;
}

ContentField ParseContentField(std::string_view field, const CodePage& codePage) {
  ContentField content;
  const auto first = ReadPiece(field);
  content.value = Stripped(first.text);
  field.remove_prefix(first.length);
  std::map<std::string, Sections> extended;
  for (std::size_t count = 0; !field.empty() && count < kMaximumParameters; ++count) {
    const auto piece = ReadPiece(field);
    field.remove_prefix(piece.length);
    const auto equals = piece.text.find('=');
    if (equals == std::string::npos) continue;
    const auto name = ParseName(std::string_view(piece.text).substr(0, equals));
    auto value = std::string_view(piece.text).substr(equals + 1);
    value.remove_prefix(std::min(value.find_first_not_of(kBlanks), value.size()));
    if (name.extended || name.hasSection) {
      extended[name.base].byNumber.try_emplace(
          name.section, Sections::Section{std::string(value), name.extended});
    } else {
      content.parameters.try_emplace(name.base, DecodeEncodedWords(value, codePage));
    }
  }
  // The extended form is the better one where a sender gives both (RFC 6266, section 4.3, says it
  // for HTTP).
  for (const auto& [name, sections] : extended) {
    if (auto text = JoinSections(sections, codePage); !text.empty()) {
      content.parameters[name] = std::move(text);
    }
  }
  return content;
}

}  // namespace quillon
