#include "codec/TextReader.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "codec/CharacterSetName.h"
#include "codec/JapaneseText.h"
#include "core/Utf8.h"
#include "core/Windows1252.h"
#include "ports/CharacterSets.h"
#include "ports/CodePage.h"

namespace quillon {

namespace {

using OptionalText = std::optional<std::string>;

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LittleMark = "\xFF\xFE";
constexpr std::string_view kUtf16BigMark = "\xFE\xFF";

bool IsSevenBit(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

OptionalText FromUtf8(std::string_view bytes) {
  return IsUtf8(bytes) ? OptionalText(bytes) : std::nullopt;
}

std::string FromWindows1252(std::string_view bytes) {
  if (IsSevenBit(bytes)) return std::string(bytes);
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 4);
  for (const char c : bytes) AppendUtf8(text, Windows1252Character(static_cast<unsigned char>(c)));
  return text;
}

// A last odd byte is half a character, and dropped.
OptionalText FromUtf16(std::string_view bytes, bool littleEndian) {
  if (bytes.starts_with(littleEndian ? kUtf16LittleMark : kUtf16BigMark)) bytes.remove_prefix(2);
  std::u16string units;
  units.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    units += static_cast<char16_t>(littleEndian ? second << 8U | first : first << 8U | second);
  }
  auto text = Utf8FromUtf16(units);
  return IsUtf8(text) ? OptionalText(std::move(text)) : std::nullopt;  // half a pair is none
}

OptionalText FromMarked(std::string_view bytes) {
  if (bytes.starts_with(kUtf8Mark)) return FromUtf8(bytes.substr(kUtf8Mark.size()));
  if (bytes.starts_with(kUtf16LittleMark)) return FromUtf16(bytes, true);
  if (bytes.starts_with(kUtf16BigMark)) return FromUtf16(bytes, false);
  return std::nullopt;
}

OptionalText FromJapanese(const CharacterSets& sets, const OptionalText& shiftJis) {
  return shiftJis ? sets.ToText(*shiftJis, code_page::kShiftJis) : std::nullopt;
}

// Either is most of the other, and a system may have one of them alone.
OptionalText FromChinese(const CharacterSets& sets, std::string_view bytes, int codePage) {
  if (auto text = sets.ToText(bytes, codePage)) return text;
  return sets.ToText(bytes, codePage == code_page::kGbk ? code_page::kGb18030 : code_page::kGbk);
}

OptionalText FromCodePage(const CharacterSets& sets, std::string_view bytes, int codePage) {
  switch (codePage) {
    case code_page::kUnknown:
      return std::nullopt;
    case code_page::kUtf8:
    case code_page::kAscii:
      return FromUtf8(bytes);
    case code_page::kWindows1252:
      return FromWindows1252(bytes);
    case code_page::kUtf16Little:
      return FromUtf16(bytes, true);
    case code_page::kUtf16Big:
      return FromUtf16(bytes, bytes.starts_with(kUtf16LittleMark));
    case code_page::kIso2022Jp:
      return FromJapanese(sets, ShiftJisFromIso2022(bytes));
    case code_page::kEucJp:
      return FromJapanese(sets, ShiftJisFromEuc(bytes));
    case code_page::kGbk:
    case code_page::kGb18030:
      return FromChinese(sets, bytes, codePage);
    case code_page::kUtf7:
    case code_page::kIso2022Kr:
      return IsSevenBit(bytes) ? sets.ToText(bytes, codePage) : std::nullopt;
    default:
      return sets.ToText(bytes, codePage);
  }
}

}  // namespace

std::string TextReader::Named(std::string_view bytes, std::string_view name) const {
  if (name.empty()) return Unnamed(bytes);
  auto text = FromCodePage(*sets_, bytes, CodePageOf(name));
  return text ? std::move(*text) : Ansi(bytes);
}

std::string TextReader::Whole(std::string_view bytes, std::string_view name) const {
  if (auto text = FromMarked(bytes)) return std::move(*text);
  return Named(bytes, name);
}

bool TextReader::IsWholeText(std::string_view bytes, std::string_view name) {
  const int codePage = name.empty() ? code_page::kUtf8 : CodePageOf(name);
  return (codePage == code_page::kUtf8 || codePage == code_page::kAscii) &&
         !bytes.starts_with(kUtf8Mark) && IsUtf8(bytes);
}

std::string TextReader::Unnamed(std::string_view bytes) const {
  return IsUtf8(bytes) ? std::string(bytes) : Ansi(bytes);
}

std::string TextReader::Ansi(std::string_view bytes) const {
  return ansi_->ToText(bytes);
}

}  // namespace quillon
