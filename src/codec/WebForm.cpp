#include "codec/WebForm.h"

#include <algorithm>
#include <cstddef>

#include "core/HexDigit.h"
#include "core/Text.h"
#include "ports/CodePage.h"

namespace quillon {

namespace {

constexpr std::size_t kEscapeLength = 3;  // "%XX"

// Line ends of a form are those of the mail: in a value they are escaped.
std::string_view WithoutLineEnds(std::string_view text) {
  constexpr std::string_view kLineEnds = "\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(kLineEnds), text.size()));
  return text.substr(0, text.find_last_not_of(kLineEnds) + 1);
}

// 0 for what is no hexadecimal number.
char EscapedByte(std::string_view escape) {
  const int high = HexDigit(escape[1]);
  const int low = HexDigit(escape[2]);
  return high < 0 || low < 0 ? '\0' : static_cast<char>(high * 16 + low);
}

// Takes the escapes at the start of the text, which become characters together: one character may
// be several bytes.
std::string TakeEscapes(std::string_view& text) {
  std::string bytes;
  while (text.size() >= kEscapeLength && text[0] == '%') {
    if (const char byte = EscapedByte(text); byte != '\0') bytes += byte;
    text.remove_prefix(kEscapeLength);
  }
  return bytes;
}

}  // namespace

std::string DecodeFormValue(std::string_view& text, const CodePage& codePage) {
  std::string value;
  for (;;) {
    const auto escape = text.find('%');
    value += text.substr(0, escape);
    if (escape == std::string_view::npos || text.size() - escape < kEscapeLength) break;
    text.remove_prefix(escape);
    value += codePage.ToText(TakeEscapes(text));
  }
  std::replace(value.begin(), value.end(), '+', ' ');
  return TrimmedCopy(value);
}

void ParseWebForm(std::string_view formText, const CodePage& codePage, WebFormFields& fields) {
  while (!formText.empty()) {
    const auto end = formText.find('&');
    const auto pair = WithoutLineEnds(formText.substr(0, end));
    formText.remove_prefix(end == std::string_view::npos ? formText.size() : end + 1);
    const auto equals = pair.find('=');
    if (equals == 0 || equals == std::string_view::npos) continue;
    auto value = pair.substr(equals + 1);
    fields.try_emplace(UpperAscii(Trim(pair.substr(0, equals))), DecodeFormValue(value, codePage));
  }
}

}  // namespace quillon
