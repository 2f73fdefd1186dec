#include "codec/TextEncoder.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <set>
#include <utility>
#include <vector>

#include "core/Text.h"
#include "core/Utf8.h"
#include "ports/CharacterEncoder.h"

namespace quillon {

// What has no code page of its own is made here.
struct OutgoingSet {
  enum class Form {
    Auto,
    Ascii,
    Utf8,
    Latin1,
    CodePage,
    Gr94,       // of the code page the part that has two bytes from A1 on: the set of the name
    ShiftJis,   // JIS X 0208 in the code page's own form
    EucJp,      // the same as EUC
    Iso2022Jp,  // the same in seven bits
  };

  std::string_view label;
  Form form;
  int codePage = 0;
};

namespace {

using Form = OutgoingSet::Form;
using Bytes = std::optional<std::string>;

constexpr int kShiftJis = 932;

constexpr OutgoingSet kAscii{"us-ascii", Form::Ascii};
constexpr OutgoingSet kUtf8{"utf-8", Form::Utf8};

constexpr OutgoingSet kSets[] = {
    {"auto", Form::Auto},
    kAscii,
    kUtf8,
    {"iso-8859-1", Form::Latin1},
    {"iso-8859-2", Form::CodePage, 28592},
    {"iso-8859-3", Form::CodePage, 28593},
    {"iso-8859-4", Form::CodePage, 28594},
    {"iso-8859-5", Form::CodePage, 28595},
    {"iso-8859-6", Form::CodePage, 28596},
    {"iso-8859-7", Form::CodePage, 28597},
    {"iso-8859-8", Form::CodePage, 28598},
    {"iso-8859-9", Form::CodePage, 28599},
    {"iso-8859-13", Form::CodePage, 28603},
    {"iso-8859-15", Form::CodePage, 28605},
    {"windows-1250", Form::CodePage, 1250},
    {"windows-1251", Form::CodePage, 1251},
    {"windows-1252", Form::CodePage, 1252},
    {"windows-1253", Form::CodePage, 1253},
    {"windows-1254", Form::CodePage, 1254},
    {"windows-1255", Form::CodePage, 1255},
    {"windows-1256", Form::CodePage, 1256},
    {"windows-1257", Form::CodePage, 1257},
    {"windows-1258", Form::CodePage, 1258},
    {"windows-874", Form::CodePage, 874},
    {"koi8-r", Form::CodePage, 20866},
    {"koi8-u", Form::CodePage, 21866},
    {"gb2312", Form::Gr94, 936},
    {"gbk", Form::CodePage, 936},
    {"gb18030", Form::CodePage, 54936},
    {"big5", Form::CodePage, 950},
    {"euc-kr", Form::Gr94, 949},
    {"shift_jis", Form::ShiftJis, kShiftJis},
    {"windows-31j", Form::CodePage, kShiftJis},
    {"euc-jp", Form::EucJp, kShiftJis},
    {"iso-2022-jp", Form::Iso2022Jp, kShiftJis},
};

// What no name is told apart by.
std::string BareName(std::string_view name) {
  auto bare = UpperAscii(Trim(name));
  std::erase_if(bare, [](char c) { return c == '-' || c == '_'; });
  return bare == "ASCII" ? "USASCII" : bare;
}

const OutgoingSet* FindSet(std::string_view name) {
  const auto bare = BareName(name);
  const auto* const found =
      std::find_if(std::begin(kSets), std::end(kSets),
                   [&](const OutgoingSet& set) { return BareName(set.label) == bare; });
  return found == std::end(kSets) ? nullptr : found;
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

std::string Latin1(std::string_view text, bool& whole) {
  std::string bytes;
  bytes.reserve(text.size());
  while (!text.empty()) {
    const auto character = TakeUtf8(text);
    whole = whole && character <= 0xFF;
    bytes += static_cast<char>(static_cast<unsigned char>(character));
  }
  return bytes;
}

bool IsGr94(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x80 || byte >= 0xA1;
  });
}

// Shift_JIS as EUC-JP or ISO-2022-JP, or as it is: as long as every character is one that JIS X
// 0208 has. The katakana of JIS X 0201 are for all but ISO-2022-JP.
class JapaneseWriter {
 public:
  explicit JapaneseWriter(Form form) : form_(form) {}

  Bytes Write(std::string_view shiftJis) {
    bytes_.reserve(shiftJis.size() + shiftJis.size() / 4);
    for (std::size_t at = 0; at < shiftJis.size(); ++at) {
      const auto byte = static_cast<unsigned char>(shiftJis[at]);
      const bool isSingle = byte < 0x80 || (byte >= 0xA1 && byte <= 0xDF);
      if (isSingle ? !Single(byte) : at + 1 == shiftJis.size()) return std::nullopt;
      if (!isSingle && !Double(byte, static_cast<unsigned char>(shiftJis[++at]))) {
        return std::nullopt;
      }
    }
    Shift(false);
    return std::move(bytes_);
  }

 private:
  bool Single(unsigned char byte) {
    if (byte >= 0x80 && form_ == Form::Iso2022Jp) return false;
    Shift(false);
    if (byte >= 0x80 && form_ == Form::EucJp) bytes_ += '\x8E';
    bytes_ += static_cast<char>(byte);
    return true;
  }

  bool Double(unsigned lead, unsigned trail) {
    // Two rows of 94 characters for each lead byte.
    const auto pair = lead - (lead >= 0xE0 ? 0xC1U : 0x81U);
    const auto place = trail - (trail >= 0x80 ? 0x41U : 0x40U);
    const auto row = pair * 2 + (place >= 94 ? 2 : 1);
    if (!(row <= 8 || (row >= 16 && row <= 84))) return false;
    const auto high = form_ == Form::EucJp ? 0xA0U : 0x20U;
    Shift(true);
    if (form_ == Form::ShiftJis) {
      bytes_ += {static_cast<char>(lead), static_cast<char>(trail)};
    } else {
      bytes_ += {static_cast<char>(row + high), static_cast<char>(place % 94 + 1 + high)};
    }
    return true;
  }

  void Shift(bool toJapanese) {
    if (form_ != Form::Iso2022Jp || std::exchange(shifted_, toJapanese) == toJapanese) return;
    bytes_ += toJapanese ? "\x1B$B" : "\x1B(B";
  }

  Form form_;
  bool shifted_ = false;
  std::string bytes_;
};

// Of text that is UTF-8; none when the set lacks a character.
Bytes InSet(std::string_view text, const OutgoingSet& set, const CharacterEncoder& system) {
  if (IsAscii(text)) return std::string(text);
  switch (set.form) {
    case Form::Auto:
    case Form::Utf8:
      return std::string(text);
    case Form::Ascii:
      return std::nullopt;
    case Form::Latin1: {
      bool whole = true;
      auto bytes = Latin1(text, whole);
      return whole ? Bytes(std::move(bytes)) : std::nullopt;
    }
    default:
      break;
  }
  auto bytes = system.ToBytes(text, set.codePage);
  if (!bytes || set.form == Form::CodePage) return bytes;
  if (set.form == Form::Gr94) return IsGr94(*bytes) ? std::move(bytes) : std::nullopt;
  return JapaneseWriter(set.form).Write(*bytes);
}

std::string OneCharacter(char32_t character) {
  std::string text;
  AppendUtf8(text, character);
  return text;
}

// Unpaired surrogates too become U+FFFD.
std::string Repaired(std::string_view text) {
  std::string repaired;
  repaired.reserve(text.size());
  while (!text.empty()) {
    const auto character = TakeUtf8(text);
    AppendUtf8(repaired, character >= 0xD800 && character <= 0xDFFF ? 0xFFFD : character);
  }
  return repaired;
}

// What a set lacks of a text, each character once, in their order; `most` of them at most.
std::vector<char32_t> LackingOf(std::string_view text, const OutgoingSet& set,
                                const CharacterEncoder& system, std::size_t most) {
  std::vector<char32_t> lacking;
  std::set<char32_t> seen;
  while (!text.empty() && lacking.size() < most) {
    const auto character = TakeUtf8(text);
    if (character < 0x80 || !seen.insert(character).second) continue;
    if (!InSet(OneCharacter(character), set, system)) lacking.push_back(character);
  }
  return lacking;
}

}  // namespace

TextEncoder::TextEncoder(std::string_view name, bool replaces, const CharacterEncoder& system)
    : set_(FindSet(name)), system_(&system), replaces_(replaces) {}

bool TextEncoder::Knows(std::string_view name) {
  return FindSet(name) != nullptr;
}

bool TextEncoder::IsAvailable() const {
  return set_->codePage == 0 || system_->Has(set_->codePage);
}

const OutgoingSet& TextEncoder::SetFor(std::string_view text) const {
  if (set_->form != Form::Auto) return *set_;
  return IsAscii(text) ? kAscii : kUtf8;
}

std::string_view TextEncoder::Label(std::string_view text) const {
  return SetFor(text).label;
}

std::optional<std::string> TextEncoder::ToBytes(std::string_view text) const {
  if (!IsUtf8(text)) return ToBytes(Repaired(text));
  auto bytes = InSet(text, *set_, *system_);
  if (bytes || !replaces_) return bytes;
  const auto lacking = LackingOf(text, *set_, *system_, text.size());
  const std::set<char32_t> replaced(lacking.begin(), lacking.end());
  std::string rest;
  rest.reserve(text.size());
  while (!text.empty()) {
    const auto character = TakeUtf8(text);
    AppendUtf8(rest, replaced.contains(character) ? U'?' : character);
  }
  return InSet(rest, *set_, *system_);
}

std::string TextEncoder::Lacking(std::string_view text) const {
  constexpr std::size_t kMost = 5;
  const auto repaired = Repaired(text);
  const auto lacking = LackingOf(repaired, *set_, *system_, kMost + 1);
  std::string words;
  for (std::size_t at = 0; at < std::min(lacking.size(), kMost); ++at) {
    std::array<char, 16> number{};
    const int size =
        std::snprintf(number.data(), number.size(), "U+%04X", static_cast<unsigned>(lacking[at]));
    words.append(words.empty() ? "" : ", ").append(number.data(), static_cast<std::size_t>(size));
    words.append(" (").append(OneCharacter(lacking[at])).append(")");
  }
  return lacking.size() > kMost ? words + " and others" : words;
}

}  // namespace quillon
