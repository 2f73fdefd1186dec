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

// Printable, and no "=".
constexpr std::array<bool, 256> MakeLiterals() {
  std::array<bool, 256> literals{};
  for (std::size_t c = '!'; c <= '~'; ++c) literals[c] = c != '=';
  return literals;
}
constexpr auto kLiterals = MakeLiterals();

bool IsLiteral(char c) {
  return kLiterals[static_cast<unsigned char>(c)];
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

// What quoted-printable comes to, but for a few octets.
std::size_t QuotedPrintableSize(std::string_view bytes) {
  const auto plain = static_cast<std::size_t>(std::count_if(bytes.begin(), bytes.end(), [](char c) {
    return IsLiteral(c) || c == ' ' || IsLineBreak(c);
  }));
  const auto size = plain + (bytes.size() - plain) * 3;
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

void AppendLine(std::string& text, std::string_view line) {
  std::size_t column = 0;
  for (std::size_t at = 0; at < line.size(); ++at) {
    const char c = line[at];
    const bool last = at + 1 == line.size();
    // A blank at the end may get lost, a dot at the start has a meaning for the server, and "From "
    // has one for mailboxes.
    const bool literal = (IsLiteral(c) || ((c == ' ' || c == '\t') && !last)) &&
                         !(column == 0 && (c == '.' || line.substr(at).starts_with("From ")));
    const std::size_t width = literal ? 1 : 3;
    if (column + width + (last ? 0 : 1) > kLongestEncoded) {
      text += "=\r\n";
      column = 0;
      --at;
      continue;
    }
    column += width;
    if (literal) {
      text += c;
    } else {
      AppendEscape(text, c);
    }
  }
}

}  // namespace

std::string EncodeQuotedPrintable(std::string_view bytes) {
  std::string text;
  text.reserve(QuotedPrintableSize(bytes) + 64);
  std::string_view line;
  while (!bytes.empty()) {
    const bool ended = TakeLine(bytes, line);
    AppendLine(text, line);
    if (ended) text += "\r\n";
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
