#include "codec/JapaneseText.h"

namespace quillon {

namespace {

constexpr unsigned kFirst = 0x21;  // of the bytes of a character in JIS X 0208
constexpr unsigned kLast = 0x7E;
constexpr unsigned kHighBit = 0x80;

constexpr bool IsJisByte(unsigned byte) {
  return byte >= kFirst && byte <= kLast;
}

// Two rows of JIS X 0208 share a lead byte; the bytes that are katakana and DEL are left out.
void AppendShiftJis(std::string& text, unsigned row, unsigned cell) {
  auto lead = (row - kFirst) / 2 + 0x81;
  if (lead > 0x9F) lead += 0x40;
  auto trail = cell + (row % 2 == 1 ? 0x1F : 0x7E);
  if (row % 2 == 1 && trail >= 0x7F) ++trail;
  text += static_cast<char>(lead);
  text += static_cast<char>(trail);
}

enum class Shift { None, Ascii, Kanji, Katakana };

// Takes an escape sequence, without its ESC, off the front.
Shift TakeShift(std::string_view& rest) {
  constexpr struct {
    std::string_view sequence;
    Shift shift;
  } kShifts[] = {
      {"(B", Shift::Ascii}, {"(J", Shift::Ascii},    {"(H", Shift::Ascii},
      {"$B", Shift::Kanji}, {"(I", Shift::Katakana}, {"$@", Shift::Kanji},
  };
  for (const auto& [sequence, shift] : kShifts) {
    if (!rest.starts_with(sequence)) continue;
    rest.remove_prefix(sequence.size());
    return shift;
  }
  return Shift::None;
}

unsigned TakeByte(std::string_view& rest) {
  const auto byte = static_cast<unsigned char>(rest[0]);
  rest.remove_prefix(1);
  return byte;
}

}  // namespace

std::optional<std::string> ShiftJisFromIso2022(std::string_view bytes) {
  constexpr unsigned kEscape = 0x1B;
  std::string text;
  text.reserve(bytes.size());
  auto shift = Shift::Ascii;
  while (!bytes.empty()) {
    const auto byte = TakeByte(bytes);
    if (byte >= kHighBit) return std::nullopt;
    if (byte == kEscape) {
      shift = TakeShift(bytes);
      if (shift == Shift::None) return std::nullopt;
    } else if (shift == Shift::Ascii || !IsJisByte(byte)) {
      if (byte == '\n') shift = Shift::Ascii;  // a line begins in ASCII, whatever was forgotten
      text += static_cast<char>(byte);
    } else if (shift == Shift::Katakana) {
      text += static_cast<char>(byte | kHighBit);
    } else {
      const auto cell = bytes.empty() ? 0 : TakeByte(bytes);
      if (!IsJisByte(cell)) return std::nullopt;
      AppendShiftJis(text, byte, cell);
    }
  }
  return text;
}

std::optional<std::string> ShiftJisFromEuc(std::string_view bytes) {
  constexpr unsigned kKatakana = 0x8E;
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const auto byte = TakeByte(bytes);
    if (byte < kHighBit) {
      text += static_cast<char>(byte);
      continue;
    }
    const auto next = bytes.empty() ? 0 : TakeByte(bytes);
    if (next < kHighBit || !IsJisByte(next - kHighBit)) return std::nullopt;
    if (byte == kKatakana) {
      text += static_cast<char>(next);
    } else if (IsJisByte(byte - kHighBit)) {
      AppendShiftJis(text, byte - kHighBit, next - kHighBit);
    } else {
      return std::nullopt;
    }
  }
  return text;
}

}  // namespace quillon
