#include "codec/HtmlFacts.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <utility>

#include "codec/HtmlTokens.h"
#include "core/HexDigit.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::string_view kScheme = "CID:";
constexpr std::string_view kBlanks = " \t\r\n\f";

class ContentIds {
 public:
  // The value of an attribute that may be an address.
  void Value(std::string_view value) {
    value.remove_prefix(std::min(value.find_first_not_of(kBlanks), value.size()));
    if (!EqualsIgnoreCase(value.substr(0, kScheme.size()), kScheme)) return;
    Add(value.substr(kScheme.size()));
  }

  // Style sheets: url(cid:logo), in quotes or without.
  void Style(const std::string& style) {
    const auto upper = UpperAscii(style);
    constexpr std::string_view kUrl = "URL(";
    for (auto at = upper.find(kUrl); at != std::string::npos; at = upper.find(kUrl, at)) {
      at += kUrl.size();
      at = std::min(upper.find_first_not_of(" \t\r\n\f\"'", at), upper.size());
      if (upper.compare(at, kScheme.size(), kScheme) != 0) continue;
      at += kScheme.size();
      const auto end = std::min(upper.find_first_of("\"')", at), upper.size());
      Add(std::string_view(style).substr(at, end - at));
      at = end;
    }
  }

  std::vector<std::string> Take() { return std::move(ids_); }

 private:
  void Add(std::string_view address) {
    const auto last = address.find_last_not_of(kBlanks);
    auto id = DecodeHexEscapes(address.substr(0, last + 1), '%');
    if (!id.empty() && seen_.insert(id).second) ids_.push_back(std::move(id));
  }

  std::vector<std::string> ids_;
  std::set<std::string> seen_;
};

// "text/html; charset=utf-8"
std::string CharacterSetIn(std::string_view contentType) {
  constexpr std::string_view kName = "CHARSET";
  const auto at = UpperAscii(contentType).find(kName);
  if (at == std::string::npos) return {};
  auto rest = contentType.substr(at + kName.size());
  rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
  if (!rest.starts_with('=')) return {};
  rest.remove_prefix(std::min(rest.find_first_not_of(" \t\r\n\f\"'", 1), rest.size()));
  return std::string(rest.substr(0, rest.find_first_of(" \t\r\n\f\"';")));
}

}  // namespace

std::vector<std::string> ContentIdsIn(std::string_view html) {
  ContentIds ids;
  HtmlTokens tokens(html);
  for (auto kind = tokens.Next(); kind != HtmlTokens::Kind::End; kind = tokens.Next()) {
    if (kind == HtmlTokens::Kind::Hidden && tokens.Name() == "STYLE") {
      ids.Style(std::string(tokens.Text()));
    } else if (kind == HtmlTokens::Kind::Tag && !tokens.Closes()) {
      for (const auto& attribute : tokens.Attributes()) {
        if (attribute.name == "STYLE") {
          ids.Style(attribute.value);
        } else {
          ids.Value(attribute.value);
        }
      }
    }
  }
  return ids.Take();
}

std::string CharacterSetOfHtml(std::string_view bytes) {
  constexpr std::size_t kFirst = 4096;
  HtmlTokens tokens(bytes.substr(0, kFirst));
  for (auto kind = tokens.Next(); kind != HtmlTokens::Kind::End; kind = tokens.Next()) {
    if (kind != HtmlTokens::Kind::Tag || tokens.Name() != "META") continue;
    auto name = TrimmedCopy(tokens.Attribute("CHARSET"));
    if (name.empty()) name = CharacterSetIn(tokens.Attribute("CONTENT"));
    if (name.empty()) continue;
    return UpperAscii(name).starts_with("UTF-16") ? "utf-8" : name;
  }
  return {};
}

}  // namespace quillon
