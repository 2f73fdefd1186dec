// Look-up tables of 16 entries for the base64 alphabet, which the vector kernels index by half a
// byte.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quillon {

// The characters with the same high half are in the alphabet by their low half, in one of up to 8
// patterns. A character is outside the alphabet when the bit of its high half's pattern is set for
// its low half.
struct NibbleTables {
  std::array<uint8_t, 16> patternOfHigh{};  // one bit each
  std::array<uint8_t, 16> outsideByLow{};
  // What added to a character (modulo 256) gives its value, by its high half; "/" has its own entry
  // in the place of 1, since no other character of the alphabet has that half.
  std::array<uint8_t, 16> toValue{};
  // What added to a value gives its character: at 0 for those below 26, at 1 for 26 to 51, from 2
  // on for those above.
  std::array<uint8_t, 16> toCharacter{};
};

constexpr NibbleTables MakeNibbleTables() {
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  NibbleTables tables;
  std::array<uint16_t, 16> lowHalves{};  // a bit for each low half that the alphabet has
  for (size_t value = 0; value < kAlphabet.size(); ++value) {
    const auto character = static_cast<uint8_t>(kAlphabet[value]);
    const auto high = static_cast<size_t>(character >> 4);
    lowHalves[high] = static_cast<uint16_t>(lowHalves[high] | 1U << (character & 15));
    const auto toValue = static_cast<uint8_t>(value - character);
    tables.toValue[character == '/' ? 1 : high] = toValue;
    const size_t entry = value < 26 ? 0 : value < 52 ? 1 : value - 50;
    tables.toCharacter[entry] = static_cast<uint8_t>(character - value);
  }
  unsigned patterns = 0;
  for (size_t high = 0; high < 16; ++high) {
    size_t same = 0;
    while (lowHalves[same] != lowHalves[high]) ++same;
    if (same < high) {
      tables.patternOfHigh[high] = tables.patternOfHigh[same];
      continue;
    }
    const auto bit = static_cast<uint8_t>(1U << patterns++);
    tables.patternOfHigh[high] = bit;
    for (size_t low = 0; low < 16; ++low) {
      if ((lowHalves[high] >> low & 1) == 0) tables.outsideByLow[low] |= bit;
    }
  }
  return tables;
}

inline constexpr NibbleTables kNibbleTables = MakeNibbleTables();

}  // namespace quillon
