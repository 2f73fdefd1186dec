#include "codec/HtmlText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "codec/HtmlEntity.h"
#include "codec/HtmlTokens.h"
#include "core/Text.h"

namespace quillon {

namespace {

// What stands between two texts; the larger wins.
enum class Gap { None, Blank, Tab, Line, Paragraph };

constexpr std::array<std::string_view, 14> kParagraphs = {
    "P", "H1", "H2", "H3", "H4", "H5", "H6", "UL", "OL", "DL", "BLOCKQUOTE", "PRE", "TABLE", "HR"};
constexpr std::array<std::string_view, 22> kLines = {
    "DIV",    "TR",      "LI",     "DT",       "DD",     "ADDRESS",    "ARTICLE", "ASIDE",
    "BODY",   "CAPTION", "CENTER", "FIELDSET", "FIGURE", "FIGCAPTION", "FOOTER",  "FORM",
    "HEADER", "LEGEND",  "MAIN",   "NAV",      "OPTION", "SECTION"};

constexpr std::size_t kDeepestList = 8;  // that is indented further than the one around it
constexpr std::string_view kSoftHyphen = "\xC2\xAD";
constexpr std::string_view kFixedBlank = "\xC2\xA0";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kRule = "----------------------------------------";

template <std::size_t Size>
bool Has(const std::array<std::string_view, Size>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool IsAddress(std::string_view link) {
  constexpr std::array<std::string_view, 5> kSchemes = {
      "http:", "https:", "ftp:", "mailto:", "tel:"};
  return std::any_of(kSchemes.begin(), kSchemes.end(), [&](std::string_view scheme) {
    return EqualsIgnoreCase(link.substr(0, scheme.size()), scheme);
  });
}

// "mailto:a@b.example" and "https://b.example/" say no more than "a@b.example" and "b.example".
bool Repeats(std::string_view link, std::string_view text) {
  if (link.ends_with('/')) link.remove_suffix(1);
  if (text.ends_with('/')) text.remove_suffix(1);
  if (!link.ends_with(text) || text.empty()) return false;
  const auto before = link.substr(0, link.size() - text.size());
  return before.empty() || before.find_first_of(":/") == before.size() - 1 ||
         (before.ends_with("://") && before.find(':') == before.size() - 3);
}

class PlainText {
 public:
  explicit PlainText(std::string_view html) : tokens_(html) { text_.reserve(html.size() / 2); }

  std::string Convert() {
    for (auto kind = tokens_.Next(); kind != HtmlTokens::Kind::End; kind = tokens_.Next()) {
      if (kind == HtmlTokens::Kind::Text) {
        Put(DecodeHtmlText(tokens_.Text()));
      } else if (kind == HtmlTokens::Kind::Tag) {
        Tag();
      }
    }
    return std::move(text_);
  }

 private:
  struct List {
    bool isNumbered = false;
    std::uint32_t number = 0;
  };

  void Separate(Gap gap) { gap_ = std::max(gap_, gap); }
  bool IsAtLineStart() const { return text_.empty() || text_.back() == '\n'; }

  void Tag() {
    const auto& name = tokens_.Name();
    if (Has(kParagraphs, name)) return Paragraph(name);
    if (Has(kLines, name)) Separate(Gap::Line);
    if (name == "LI") mark_.clear();
    if (name == "A") return Link();
    if (tokens_.Closes()) return;
    if (name == "BR") {
      gap_ = gap_ >= Gap::Line ? Gap::Paragraph : Gap::Line;
    } else if (name == "TD" || name == "TH") {
      Separate(Gap::Tab);
    } else if (name == "LI") {
      BeginItem();
    } else if (name == "IMG") {
      Put(tokens_.Attribute("ALT"));
    }
  }

  void Paragraph(const std::string& name) {
    const bool isList = name == "UL" || name == "OL";
    const bool isInner = isList && lists_.size() > (tokens_.Closes() ? 1U : 0U);
    Separate(isInner ? Gap::Line : Gap::Paragraph);
    if (isList && tokens_.Closes()) {
      if (!lists_.empty()) lists_.pop_back();
    } else if (isList) {
      if (lists_.size() < kMostLists) lists_.push_back({name == "OL"});
    } else if (name == "PRE") {
      Preformat(tokens_.Closes());
    } else if (name == "HR" && !tokens_.Closes()) {
      Put(kRule);
      Separate(Gap::Paragraph);
    }
  }

  void Preformat(bool ends) {
    preBegins_ = !ends;
    if (!ends) {
      ++preformatted_;
    } else if (preformatted_ > 0) {
      --preformatted_;
    }
  }

  // Its mark stands before the first text of it.
  void BeginItem() {
    const auto depth = std::min(std::max<std::size_t>(lists_.size(), 1), kDeepestList);
    mark_ = std::string((depth - 1) * 2, ' ');
    const bool isNumbered = !lists_.empty() && lists_.back().isNumbered;
    mark_ += isNumbered ? std::to_string(++lists_.back().number) + ". " : "* ";
  }

  void Link() {
    EndLink();
    if (tokens_.Closes()) return;
    auto link = TrimmedCopy(tokens_.Attribute("HREF"));
    if (!IsAddress(link)) return;
    link_ = std::move(link);
    linkStart_ = text_.size();
  }

  void EndLink() {
    if (link_.empty()) return;
    const auto link = std::exchange(link_, {});
    auto shown = std::string_view(text_).substr(linkStart_);
    shown.remove_prefix(std::min(shown.find_first_not_of(" \t\r\n"), shown.size()));
    if (Repeats(link, shown)) return;
    const auto after = shown.empty() ? Gap::None : std::exchange(gap_, Gap::Blank);
    Write("<");
    for (const char c : link) {
      if (static_cast<unsigned char>(c) > ' ') text_ += c;
    }
    text_ += '>';
    Separate(after);
  }

  void Put(std::string_view text) {
    while (!text.empty()) {
      const bool isBlank = static_cast<unsigned char>(text[0]) <= ' ';
      const auto size = isBlank ? 1 : std::min(text.find_first_of(kStops, 1), text.size());
      if (isBlank) {
        Blank(text[0]);
      } else {
        Word(text.substr(0, size));
      }
      text.remove_prefix(size);
    }
  }

  // In what is preformatted they count, but for a line end at its start.
  void Blank(char c) {
    if (preformatted_ == 0) return Separate(Gap::Blank);
    if (c == '\r') return;
    const bool isFirst = std::exchange(preBegins_, false);
    if (c != '\n') {
      Write(c == '\t' ? "\t" : " ");
    } else if (!isFirst && !text_.empty()) {
      Write(kLineEnd);
    }
  }

  void Word(std::string_view word) {
    if (word.starts_with(kSoftHyphen)) word.remove_prefix(kSoftHyphen.size());
    if (word.starts_with(kFixedBlank)) {
      Write(" ");
      word.remove_prefix(kFixedBlank.size());
    }
    if (!word.empty()) Write(word);
  }

  void Write(std::string_view text) {
    preBegins_ = false;
    const auto gap = std::exchange(gap_, Gap::None);
    if (!text_.empty() && gap >= Gap::Line) {
      if (!IsAtLineStart()) text_ += kLineEnd;
      if (gap == Gap::Paragraph) text_ += kLineEnd;
    } else if (gap == Gap::Tab && !IsAtLineStart()) {
      text_ += '\t';
    } else if (gap == Gap::Blank && !IsAtLineStart()) {
      text_ += ' ';
    }
    text_ += std::exchange(mark_, {});
    text_ += text;
  }

  static constexpr std::size_t kMostLists = 100;
  // Bytes of blanks, and the first one of the characters of their own.
  static constexpr std::string_view kStops{
      "\0\1\2\3\4\5\6\7\x08\t\n\x0B\f\r\x0E\x0F\x10\x11\x12\x13\x14\x15\x16\x17\x18\x19\x1A\x1B"
      "\x1C\x1D\x1E\x1F \xC2",
      34};

  HtmlTokens tokens_;
  std::string text_;
  Gap gap_ = Gap::None;
  std::string mark_;  // of the item that has begun
  std::vector<List> lists_;
  std::size_t preformatted_ = 0;  // elements around what comes
  bool preBegins_ = false;
  std::string link_;
  std::size_t linkStart_ = 0;
};

}  // namespace

std::string PlainTextOfHtml(std::string_view html) {
  return PlainText(html).Convert();
}

}  // namespace quillon
