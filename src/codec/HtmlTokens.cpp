#include "codec/HtmlTokens.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "codec/HtmlEntity.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::array<std::string_view, 3> kHiding = {"SCRIPT", "STYLE", "TITLE"};
constexpr std::string_view kBlanks = " \t\r\n\f";

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsBlank(char c) {
  return kBlanks.find(c) != std::string_view::npos;
}

std::string_view WithoutLeadingBlanks(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

// Of the ">" that ends a tag; one within the quotes of a value does not.
std::size_t EndOfTag(std::string_view tag) {
  char quote = 0;
  bool isValueNext = false;
  for (std::size_t at = 1; at < tag.size(); ++at) {
    const char c = tag[at];
    if (quote != 0) {
      if (c == quote) quote = 0;
    } else if (c == '>') {
      return at;
    } else if (isValueNext && (c == '"' || c == '\'')) {
      quote = c;
    }
    isValueNext = quote == 0 && (c == '=' || (isValueNext && IsBlank(c)));
  }
  return std::string_view::npos;
}

// The next attribute, which is taken off the text.
HtmlAttribute TakeAttribute(std::string_view& text) {
  HtmlAttribute attribute;
  const auto nameEnd = std::min(text.find_first_of(" \t\r\n\f=/", 1), text.size());
  attribute.name = UpperAscii(text.substr(0, nameEnd));
  text = WithoutLeadingBlanks(text.substr(nameEnd));
  if (!text.starts_with('=')) return attribute;
  text = WithoutLeadingBlanks(text.substr(1));
  const bool isQuoted = text.starts_with('"') || text.starts_with('\'');
  if (isQuoted) {
    const auto end = std::min(text.find(text[0], 1), text.size());
    attribute.value = DecodeHtmlAttribute(text.substr(1, end - 1));
    text.remove_prefix(std::min(end + 1, text.size()));
  } else {
    const auto end = std::min(text.find_first_of(kBlanks), text.size());
    attribute.value = DecodeHtmlAttribute(text.substr(0, end));
    text.remove_prefix(end);
  }
  return attribute;
}

}  // namespace

HtmlTokens::Kind HtmlTokens::Next() {
  if (std::exchange(hides_, false)) return TakeHidden();
  while (!isLiteral_ && SkipRemark()) {
  }
  if (rest_.empty()) return Kind::End;
  if (!isLiteral_ && TakeTag()) return Kind::Tag;
  const auto end = isLiteral_ ? std::string_view::npos : rest_.find('<', 1);
  text_ = rest_.substr(0, end);
  rest_.remove_prefix(text_.size());
  return Kind::Text;
}

// A comment or a declaration.
bool HtmlTokens::SkipRemark() {
  constexpr std::string_view kComment = "<!--";
  constexpr std::string_view kCommentEnd = "-->";
  if (!rest_.starts_with("<!") && !rest_.starts_with("<?")) return false;
  if (rest_.starts_with(kComment) && !hasEndlessRemark_) {
    const auto end = rest_.find(kCommentEnd, 2);
    if (end != std::string_view::npos) {
      rest_.remove_prefix(end + kCommentEnd.size());
      return true;
    }
    hasEndlessRemark_ = true;
  }
  const auto end = rest_.find('>');
  if (end == std::string_view::npos) {
    isLiteral_ = true;
    return false;
  }
  rest_.remove_prefix(end + 1);
  return true;
}

bool HtmlTokens::TakeTag() {
  const std::size_t nameAt = rest_.starts_with("</") ? 2 : 1;
  if (rest_[0] != '<' || rest_.size() <= nameAt || !IsLetter(rest_[nameAt])) return false;
  const auto end = EndOfTag(rest_);
  if (end == std::string_view::npos) {
    isLiteral_ = true;
    return false;
  }
  const auto tag = rest_.substr(nameAt, end - nameAt);
  rest_.remove_prefix(end + 1);
  const auto nameEnd = std::min(tag.find_first_of(" \t\r\n\f/"), tag.size());
  name_ = UpperAscii(tag.substr(0, nameEnd));
  attributes_ = tag.substr(nameEnd);
  closes_ = nameAt == 2;
  hides_ = !closes_ && std::find(kHiding.begin(), kHiding.end(), name_) != kHiding.end();
  return true;
}

// Up to the tag that closes it, else all that is left.
HtmlTokens::Kind HtmlTokens::TakeHidden() {
  std::size_t at = rest_.find("</");
  while (at != std::string_view::npos) {
    const auto behind = rest_.substr(at + 2);
    const bool isName = EqualsIgnoreCase(behind.substr(0, name_.size()), name_);
    if (isName && (behind.size() == name_.size() || !IsLetter(behind[name_.size()]))) break;
    at = rest_.find("</", at + 2);
  }
  text_ = rest_.substr(0, at);
  rest_.remove_prefix(text_.size());
  return Kind::Hidden;
}

std::vector<HtmlAttribute> HtmlTokens::Attributes() const {
  constexpr std::string_view kBetween = " \t\r\n\f/";
  std::vector<HtmlAttribute> attributes;
  auto text = attributes_;
  for (;;) {
    text = text.substr(std::min(text.find_first_not_of(kBetween), text.size()));
    if (text.empty()) return attributes;
    attributes.push_back(TakeAttribute(text));
  }
}

std::string HtmlTokens::Attribute(std::string_view upperName) const {
  for (auto& attribute : Attributes()) {
    if (attribute.name == upperName) return std::move(attribute.value);
  }
  return {};
}

}  // namespace quillon
