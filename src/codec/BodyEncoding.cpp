#include "codec/BodyEncoding.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "codec/Base64.h"

namespace quillon {

namespace {

constexpr std::size_t kLongestLine = 998;  // RFC 5322, section 2.1.1
constexpr std::size_t kLongestEncoded = 76;

// What quoted-printable does with a character.
enum class Kind : std::uint8_t { Escaped, Literal, Blank, LineBreak };

constexpr std::array<Kind, 256> MakeKinds() {
  std::array<Kind, 256> kinds{};
  for (std::size_t c = '!'; c <= '~'; ++c) kinds[c] = c == '=' ? Kind::Escaped : Kind::Literal;
  for (const auto c : {' ', '\t'}) kinds[static_cast<unsigned char>(c)] = Kind::Blank;
  for (const auto c : {'\r', '\n'}) kinds[static_cast<unsigned char>(c)] = Kind::LineBreak;
  return kinds;
}
constexpr auto kKinds = MakeKinds();

Kind KindOf(char c) {
  return kKinds[static_cast<unsigned char>(c)];
}

bool IsLineBreak(char c) {
  return c == '\r' || c == '\n';
}

// Takes the first line off, with its line end; whether it had one.
bool TakeLine(std::string_view& rest, std::string_view& line) {
  const auto* const end = std::find_if(rest.begin(), rest.end(), IsLineBreak);
  line = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
  rest.remove_prefix(line.size());
  if (rest.empty()) return false;
  rest.remove_prefix(rest.starts_with("\r\n") ? 2 : 1);
  return true;
}

bool IsPlain(std::string_view bytes) {
  const bool ascii = std::all_of(bytes.begin(), bytes.end(), [](char c) { return c > '\0'; });
  std::string_view line;
  while (ascii && !bytes.empty()) {
    TakeLine(bytes, line);
    if (line.size() > kLongestLine || line == ".") return false;
  }
  return ascii;
}

// Without branches, so that the compiler takes many at once. A tab counts as escaped.
std::uint8_t Escaped(char c) {
  const bool kept = (c >= ' ' && c <= '~' && c != '=') || IsLineBreak(c);
  return kept ? 0 : 1;
}

// What quoted-printable comes to, but for a few octets.
std::size_t QuotedPrintableSize(std::string_view bytes) {
  constexpr std::size_t kBlock = 64;
  std::size_t size = bytes.size();
  const auto count = [&](std::string_view block) {
    std::uint8_t escaped = 0;
    for (const char c : block) escaped = static_cast<std::uint8_t>(escaped + Escaped(c));
    size += escaped * std::size_t{2};
  };
  for (; bytes.size() >= kBlock; bytes.remove_prefix(kBlock)) count(bytes.substr(0, kBlock));
  count(bytes);
  return size + size / kLongestEncoded * 3;
}

std::string WithLineEnds(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 16);
  std::string_view line;
  while (!bytes.empty()) {
    const bool ended = TakeLine(bytes, line);
    text.append(line).append(ended ? "\r\n" : "");
  }
  return text;
}

std::string EncodeBase64(std::string_view bytes) {
  const auto text = WithLineEnds(bytes);
  std::string lines(Base64EncodedSize(text.size()), '\0');
  EncodeBase64Lines(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()),
                    reinterpret_cast<std::uint8_t*>(lines.data()));
  return lines;
}

void AppendEscape(std::string& text, char c) {
  static constexpr std::string_view kHex = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  const char escape[] = {'=', kHex[byte >> 4U], kHex[byte & 0xFU]};
  text.append(escape, sizeof escape);
}

// How much of the line stands in quoted-printable as it is, and is not its end.
std::size_t LiteralPrefix(std::string_view line, std::size_t most) {
  most = std::min(most, line.size());
  std::size_t size = 0;
  while (size < most &&
         (KindOf(line[size]) == Kind::Literal || KindOf(line[size]) == Kind::Blank)) {
    ++size;
  }
  const bool ends = size == line.size() || KindOf(line[size]) == Kind::LineBreak;
  return ends && size > 0 ? size - 1 : size;
}

// A blank at the end may get lost, a dot at the start has a meaning for the server, and "From " has
// one for mailboxes.
bool IsLiteral(std::string_view rest, bool first, bool last) {
  const auto kind = KindOf(rest[0]);
  return (kind == Kind::Literal || (kind == Kind::Blank && !last)) &&
         !(first && (rest[0] == '.' || rest.starts_with("From ")));
}

}  // namespace

std::string EncodeQuotedPrintable(std::string_view bytes) {
  std::string text;
  text.reserve(QuotedPrintableSize(bytes) + 64);
  std::size_t column = 0;
  while (!bytes.empty()) {
    if (KindOf(bytes[0]) == Kind::LineBreak) {
      bytes.remove_prefix(bytes.starts_with("\r\n") ? 2 : 1);
      text += "\r\n";
      column = 0;
      continue;
    }
    if (column > 0) {
      const auto prefix = LiteralPrefix(bytes, kLongestEncoded - 1 - column);
      text.append(bytes, 0, prefix);
      bytes.remove_prefix(prefix);
      column += prefix;
    }
    const bool last = bytes.size() == 1 || KindOf(bytes[1]) == Kind::LineBreak;
    const bool literal = IsLiteral(bytes, column == 0, last);
    const std::size_t width = literal ? 1 : 3;
    if (column + width + (last ? 0 : 1) > kLongestEncoded) {
      text += "=\r\n";
      column = 0;
      continue;
    }
    column += width;
    if (literal) {
      text += bytes[0];
    } else {
      AppendEscape(text, bytes[0]);
    }
    bytes.remove_prefix(1);
  }
  return text;
}

EncodedBody EncodeBody(std::string bytes) {
  if (IsPlain(bytes)) return {"7bit", std::move(bytes)};
  if (QuotedPrintableSize(bytes) <= Base64EncodedSize(bytes.size())) {
    return {"quoted-printable", EncodeQuotedPrintable(bytes)};
  }
  return {"base64", EncodeBase64(bytes)};
}

}  // namespace quillon
