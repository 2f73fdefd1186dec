#include "codec/FieldFold.h"

#include <algorithm>

namespace quillon {

namespace {

constexpr std::string_view kBlanks = " \t";

bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}

// The last blank that keeps the line short, or the first one behind; `last` when there is none.
std::size_t FoldPosition(std::string_view rest, std::size_t first, std::size_t last) {
  auto best = last;
  for (auto at = first; at < last && (at <= kFieldColumns || best == last); ++at) {
    // Of several blanks the first, so that a line does not end in one.
    if (IsBlank(rest[at]) && !IsBlank(rest[at - 1])) best = at;
  }
  return best;
}

}  // namespace

std::string FoldField(std::string_view field) {
  std::string lines;
  lines.reserve(field.size() + field.size() / 32 + 2);
  const auto end = field.find_last_not_of(kBlanks) + 1;  // blanks behind it stay on its line
  std::size_t start = 0;
  auto visible = field.find_first_not_of(kBlanks, field.find(':') + 1);
  while (visible < end && end - start > kFieldColumns) {
    const auto rest = field.substr(start);
    const auto cut = FoldPosition(rest, visible - start + 1, end - start);
    if (start + cut == end) break;
    lines.append(rest.substr(0, cut)).append("\r\n");
    start += cut;
    visible = field.find_first_not_of(kBlanks, start);
  }
  return lines.append(field.substr(start)).append("\r\n");
}

}  // namespace quillon
