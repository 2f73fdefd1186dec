#include "internet/BodyText.h"

#include <algorithm>
#include <cstring>

namespace quillon {

namespace {

bool IsLineBreak(char c) {
  return c == '\r' || c == '\n';
}

// Where the line ends that the text begins with, at most `limit` bytes away.
std::size_t LineLength(std::string_view text, std::size_t limit) {
  const auto size = std::min(text.size(), limit);
  const auto* const lf = static_cast<const char*>(std::memchr(text.data(), '\n', size));
  const auto length = lf != nullptr ? static_cast<std::size_t>(lf - text.data()) : size;
  const auto* const cr = static_cast<const char*>(std::memchr(text.data(), '\r', length));
  return cr != nullptr ? static_cast<std::size_t>(cr - text.data()) : length;
}

}  // namespace

BodyText::BodyText(std::string_view text)
    : rest_(text), blankFirst_(text.size() > 1 && text[0] == '.' && IsLineBreak(text[1])) {}

DataSource::State BodyText::Fill(std::string& block, std::size_t wanted) {
  const auto end = block.size() + wanted;
  if (blankFirst_) {
    block += " .";
    rest_.remove_prefix(1);
    blankFirst_ = atLineStart_ = false;
  }
  while (!rest_.empty() && block.size() < end) {
    if (atLineStart_ && rest_[0] == '.') {
      const bool alone = rest_.size() == 1 || IsLineBreak(rest_[1]);
      block += alone ? ". " : "..";
      rest_.remove_prefix(1);
      atLineStart_ = false;
      continue;
    }
    if (IsLineBreak(rest_[0])) {
      block += "\r\n";
      rest_.remove_prefix(rest_.starts_with("\r\n") ? 2 : 1);
      atLineStart_ = true;
      continue;
    }
    const auto length = LineLength(rest_, end - block.size());
    block += rest_.substr(0, length);
    rest_.remove_prefix(length);
    atLineStart_ = false;
  }
  return rest_.empty() ? State::End : State::More;
}

}  // namespace quillon
