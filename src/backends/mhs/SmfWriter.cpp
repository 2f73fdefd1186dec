#include "backends/mhs/SmfWriter.h"

#include <string_view>

namespace quillon {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kMostColumns = 78;

bool IsWhite(char c) {
  return c == ' ' || c == '\t';
}

bool CanFoldAt(std::string_view line, std::size_t at) {
  return line[at] == ' ' && at + 1 < line.size() && !IsWhite(line[at + 1]) &&
         !IsWhite(line[at - 1]);
}

// Where to fold: as far back as fits, else at the first place; npos when there is none. `from` is
// what stays on the line in any case, at least one character.
std::size_t FoldOf(std::string_view line, std::size_t from) {
  for (auto at = kMostColumns; at > from; --at) {
    if (CanFoldAt(line, at)) return at;
  }
  for (auto at = kMostColumns; at < line.size(); ++at) {
    if (at > from && CanFoldAt(line, at)) return at;
  }
  return std::string_view::npos;
}

void AppendField(std::string& text, const SmfField& field) {
  const auto whole = field.name + ": " + CleanSmfValue(field.value);
  std::string_view line = whole;
  auto from = field.name.size() + 1;
  while (line.size() > kMostColumns) {
    const auto at = FoldOf(line, from);
    if (at == std::string_view::npos) break;
    text.append(line.substr(0, at)).append(kLineEnd);
    line.remove_prefix(at);
    from = 1;
  }
  text.append(line).append(kLineEnd);
}

void AppendBody(std::string& text, std::string_view body) {
  while (!body.empty()) {
    const auto end = body.find_first_of(kLineEnd);
    text.append(body.substr(0, end)).append(kLineEnd);
    if (end == std::string_view::npos) return;
    body.remove_prefix(end);
    body.remove_prefix(body.starts_with(kLineEnd) ? 2 : 1);
  }
}

}  // namespace

std::string WriteSmf(const SmfMessage& message) {
  std::string text = "SMF-70\r\n";
  for (const auto& field : message.fields) AppendField(text, field);
  text += kLineEnd;
  AppendBody(text, message.body);
  return text;
}

}  // namespace quillon
