#include "core/RecipientText.h"

#include <array>

#include "core/Text.h"

namespace quillon {

namespace {

// Where the closing character of a group stands; each kind is looked for at most once past its last
// occurrence, so that a text of many unclosed groups still takes linear time.
class GroupEnds {
 public:
  explicit GroupEnds(std::string_view text) : text_(text) {}

  std::size_t Find(char close, std::size_t from) {
    const auto kind = static_cast<unsigned char>(close);
    if (missing_[kind]) return std::string_view::npos;
    const auto end = close == '"' ? QuoteEnd(text_, from) : text_.find(close, from);
    missing_[kind] = end == std::string_view::npos;
    return end;
  }

 private:
  std::string_view text_;
  std::array<bool, 256> missing_{};
};

}  // namespace

std::size_t QuoteEnd(std::string_view text, std::size_t at) {
  while (at < text.size() && text[at] != '"') at += text[at] == '\\' ? 2U : 1U;
  return at < text.size() ? at : std::string_view::npos;
}

std::size_t LastBracket(std::string_view text) {
  auto open = std::string_view::npos;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '<') open = at;
    if (text[at] != '"' || !BeginsWord(text, at)) continue;
    const auto end = QuoteEnd(text, at + 1);
    if (end != std::string_view::npos) at = end;
  }
  return open;
}

std::vector<std::string> SplitRecipients(std::string_view text, std::string_view delimiter,
                                         std::string_view brackets) {
  std::vector<std::string> recipients;
  GroupEnds ends(text);
  std::size_t start = 0;
  const auto take = [&](std::size_t end) {
    if (const auto part = Trim(text.substr(start, end - start)); !part.empty()) {
      recipients.emplace_back(part);
    }
  };
  for (std::size_t at = 0; at < text.size();) {
    if (!delimiter.empty() && text.substr(at).starts_with(delimiter)) {
      take(at);
      at += delimiter.size();
      start = at;
      continue;
    }
    char close = 0;
    if (text[at] == '"' && BeginsWord(text.substr(start), at - start)) close = '"';
    if (brackets.size() == 2 && text[at] == brackets[0]) close = brackets[1];
    const auto end = close != 0 ? ends.Find(close, at + 1) : std::string_view::npos;
    at = (end == std::string_view::npos ? at : end) + 1;
  }
  take(text.size());
  return recipients;
}

}  // namespace quillon
