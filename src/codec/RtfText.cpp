#include "codec/RtfText.h"

#include <algorithm>
#include <utility>

#include "core/HexDigit.h"
#include "core/Utf8.h"

namespace quillon {

namespace {

constexpr std::size_t kMostWord = 32;
constexpr std::size_t kMostFonts = 4096;
constexpr std::size_t kMostHeldText = 64U << 10U;
constexpr std::int32_t kMostNumber = 100'000'000;
constexpr std::string_view kLineEnd = "\r\n";

struct WordText {
  std::string_view word;
  std::string_view text;
};
constexpr WordText kTexts[] = {
    {"par", kLineEnd},     {"line", kLineEnd},      {"row", kLineEnd},       {"sect", kLineEnd},
    {"page", kLineEnd},    {"tab", "\t"},           {"cell", "\t"},          {"nestcell", "\t"},
    {"nestrow", kLineEnd}, {"emdash", "\u2014"},    {"endash", "\u2013"},    {"lquote", "\u2018"},
    {"rquote", "\u2019"},  {"ldblquote", "\u201C"}, {"rdblquote", "\u201D"}, {"bullet", "\u2022"},
    {"emspace", "\u2003"}, {"enspace", "\u2002"},
};

// Groups whose text is none of the message.
constexpr std::string_view kWithoutText[] = {
    "colortbl", "stylesheet", "info",      "pict",    "nonshppict", "header",  "headerl",
    "headerr",  "headerf",    "footer",    "footerl", "footerr",    "footerf", "filetbl",
    "fldinst",  "objdata",    "listtable", "revtbl",  "xe",         "tc",      "bkmkstart",
};

struct FontSet {
  int number;
  int codePage;
};
constexpr FontSet kSets[] = {
    {0, 1252},   {77, 10000}, {128, 932},  {129, 949},  {130, 1361}, {134, 936},
    {136, 950},  {161, 1253}, {162, 1254}, {163, 1258}, {177, 1255}, {178, 1256},
    {186, 1257}, {204, 1251}, {222, 874},  {238, 1250}, {254, 437},  {255, 850},
};

constexpr bool IsLetter(char c) noexcept {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
constexpr bool IsDigit(char c) noexcept {
  return c >= '0' && c <= '9';
}

std::string NameOfPage(int codePage) {
  return codePage == 10000 ? "macintosh" : "cp" + std::to_string(codePage);
}

}  // namespace

void RtfText::Append(std::string_view bytes) {
  for (const char c : bytes) Take(c);
}

void RtfText::Take(char c) {
  switch (state_) {
    case State::Text:
      TakeText(c);
      break;
    case State::Escape:
      TakeEscape(c);
      break;
    case State::Word:
    case State::Number:
      TakeWord(c);
      break;
    case State::Hexadecimal:
      TakeHexadecimal(c);
      break;
    case State::Binary:
      if (--number_ <= 0) state_ = State::Text;
      break;
  }
}

void RtfText::TakeText(char c) {
  switch (c) {
    case '{':
      BeginGroup();
      break;
    case '}':
      EndGroup();
      break;
    case '\\':
      state_ = State::Escape;
      break;
    case '\r':
    case '\n':
    case '\0':
      break;
    default:
      PutByte(c);
      break;
  }
}

void RtfText::TakeEscape(char c) {
  if (IsLetter(c)) {
    word_.assign(1, c);
    number_ = 0;
    negative_ = false;
    hasNumber_ = false;
    state_ = State::Word;
    return;
  }
  state_ = State::Text;
  if (c == '\'') {
    digits_.clear();
    state_ = State::Hexadecimal;
  } else if (c == '\\' || c == '{' || c == '}') {
    PutByte(c);
  } else if (!Replaces()) {
    if (c == '*') group_.destination = Destination::None;
    if (c == '~') PutText("\u00A0");
    if (c == '_') PutText("\u2011");
    if (c == '\r' || c == '\n') PutText(kLineEnd);
  }
}

void RtfText::TakeWord(char c) {
  if (state_ == State::Word && IsLetter(c)) {
    if (word_.size() < kMostWord) word_ += c;
    return;
  }
  if (state_ == State::Word && c == '-') {
    negative_ = true;
    state_ = State::Number;
    return;
  }
  if (IsDigit(c)) {
    hasNumber_ = true;
    number_ = std::min(number_ * 10 + (c - '0'), kMostNumber);
    state_ = State::Number;
    return;
  }
  state_ = State::Text;
  Word();
  if (c == ' ') return;
  Take(c);
}

void RtfText::TakeHexadecimal(char c) {
  if (HexDigit(c) < 0) {
    state_ = State::Text;
    Take(c);
    return;
  }
  digits_ += c;
  if (digits_.size() < 2) return;
  state_ = State::Text;
  PutByte(static_cast<char>(HexDigit(digits_[0]) * 16 + HexDigit(digits_[1])));
}

void RtfText::BeginGroup() {
  toReplace_ = 0;
  if (outer_.size() < kMaximumDepth) {
    outer_.push_back(group_);
  } else {
    ++tooDeep_;
  }
}

void RtfText::EndGroup() {
  toReplace_ = 0;
  if (tooDeep_ > 0) {
    --tooDeep_;
  } else if (!outer_.empty()) {
    group_ = outer_.back();
    outer_.pop_back();
  }
}

// Whether what comes is for readers that know no Unicode.
bool RtfText::Replaces() {
  if (toReplace_ == 0) return false;
  --toReplace_;
  return true;
}

void RtfText::Word() {
  const auto value = negative_ ? -number_ : number_;
  number_ = value;
  if (word_ == "bin") {
    if (value > 0) state_ = State::Binary;
    return;
  }
  if (Replaces() || FontWord()) return;
  if (word_ == "u") {
    Unicode();
  } else if (word_ == "uc") {
    group_.replacements = std::clamp(value, 0, 100);
  } else if (std::find(std::begin(kWithoutText), std::end(kWithoutText), word_) !=
             std::end(kWithoutText)) {
    group_.destination = Destination::None;
  } else {
    const auto* const row = std::find_if(std::begin(kTexts), std::end(kTexts),
                                         [&](const WordText& text) { return text.word == word_; });
    if (row != std::end(kTexts)) PutText(row->text);
  }
}

// Words that say what a byte means.
bool RtfText::FontWord() {
  const bool inTable = group_.destination == Destination::Fonts;
  if (word_ == "fonttbl") {
    if (group_.destination == Destination::Text) group_.destination = Destination::Fonts;
  } else if (word_ == "f") {
    group_.font = number_;
  } else if (word_ == "plain") {
    group_.font = -1;
  } else if (word_ == "deff") {
    defaultFont_ = number_;
  } else if (word_ == "fcharset" && inTable) {
    const auto* const row = std::find_if(std::begin(kSets), std::end(kSets),
                                         [&](const FontSet& set) { return set.number == number_; });
    if (row != std::end(kSets) && fonts_.size() < kMostFonts) {
      fonts_[group_.font] = row->codePage;
    }
  } else if (word_ == "ansicpg") {
    codePage_ = number_;
  } else if (word_ == "mac") {
    codePage_ = 10000;
  } else if (word_ == "pc") {
    codePage_ = 437;
  } else if (word_ == "pca") {
    codePage_ = 850;
  } else {
    return false;
  }
  return true;
}

// A unit of UTF-16, as a signed number.
void RtfText::Unicode() {
  toReplace_ = group_.replacements;
  if (group_.destination != Destination::Text || tooDeep_ > 0) return;
  if (!bytes_.empty() || units_.size() >= kMostHeldText) Flush();
  units_ += static_cast<char16_t>(number_);
}

int RtfText::CodePage() const {
  const auto found = fonts_.find(group_.font < 0 ? defaultFont_ : group_.font);
  return found == fonts_.end() ? codePage_ : found->second;
}

// One byte of a character.
void RtfText::PutByte(char c) {
  if (Replaces() || group_.destination != Destination::Text || tooDeep_ > 0) return;
  const int page = CodePage();
  if (page != bytesPage_ || !units_.empty() || bytes_.size() >= kMostHeldText) Flush();
  bytesPage_ = page;
  bytes_ += c;
}

void RtfText::PutText(std::string_view text) {
  if (group_.destination != Destination::Text || tooDeep_ > 0) return;
  Flush();
  sink_.Append(text);
}

void RtfText::Flush() {
  if (!bytes_.empty()) sink_.Append(reader_.Named(bytes_, NameOfPage(bytesPage_)));
  if (!units_.empty()) sink_.Append(Utf8FromUtf16(units_));
  bytes_.clear();
  units_.clear();
}

}  // namespace quillon
