#include "Escapes.h"

#include <charconv>
#include <stdexcept>

namespace mailhost {

namespace {

// Takes one escape, without its backslash, off the front of `text`.
char TakeEscape(std::string_view& text) {
  constexpr std::string_view kLetters = "rnt0\\*";
  constexpr std::string_view kMeanings{"\r\n\t\0\\*", 6};
  const std::size_t letter = text.empty() ? std::string_view::npos : kLetters.find(text.front());
  if (letter != std::string_view::npos) {
    text.remove_prefix(1);
    return kMeanings[letter];
  }
  unsigned char byte = 0;
  if (text.size() >= 3 && text.front() == 'x' &&
      std::from_chars(text.data() + 1, text.data() + 3, byte, 16).ptr == text.data() + 3) {
    text.remove_prefix(3);
    return static_cast<char>(byte);
  }
  throw std::invalid_argument("no such escape: \\" + std::string(text.substr(0, 1)));
}

}  // namespace

std::string Unescape(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const char c = text.front();
    text.remove_prefix(1);
    out += c == '\\' ? TakeEscape(text) : c;
  }
  return out;
}

Pattern::Pattern(std::string_view text) : parts_(1) {
  while (!text.empty()) {
    const char c = text.front();
    text.remove_prefix(1);
    if (c == '*') {
      parts_.emplace_back();
    } else {
      parts_.back() += c == '\\' ? TakeEscape(text) : c;
    }
  }
}

bool Pattern::Matches(std::string_view line) const {
  const std::string& first = parts_.front();
  const std::string& last = parts_.back();
  if (parts_.size() == 1) return line == first;
  if (line.size() < first.size() + last.size()) return false;
  if (!line.starts_with(first) || !line.ends_with(last)) return false;
  line.remove_prefix(first.size());
  line.remove_suffix(last.size());
  for (std::size_t i = 1; i + 1 < parts_.size(); ++i) {
    const std::size_t at = line.find(parts_[i]);
    if (at == std::string_view::npos) return false;
    line.remove_prefix(at + parts_[i].size());
  }
  return true;
}

}  // namespace mailhost
