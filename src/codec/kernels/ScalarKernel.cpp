// The plain kernel: two characters per look-up when encoding, one look-up per character when
// decoding.
#include <array>
#include <cstring>
#include <string_view>
#include <utility>

#include "codec/kernels/QuotedPrintableDecoder.h"

namespace quillon {
namespace {

constexpr std::string_view kBase64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kUuAlphabet =
    "`!\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_";

// The two characters of each 12-bit value, the first one in the lower half.
using EncodeTable = std::array<uint16_t, 4096>;

constexpr EncodeTable MakeEncodeTable(std::string_view alphabet) {
  EncodeTable table{};
  for (size_t value = 0; value < table.size(); ++value) {
    table[value] = static_cast<uint16_t>(alphabet[value >> 6] | alphabet[value & 63] << 8);
  }
  return table;
}

// What a character contributes to its group, by its place in it: the first byte in the lowest 8
// bits, the third in the highest of 24. A character outside the alphabet has kOutside set.
struct DecodeTable {
  std::array<std::array<uint32_t, 256>, 4> places{};
};

constexpr uint32_t kOutside = 0x80000000U;

constexpr void SetCharacter(DecodeTable& table, size_t character, uint32_t value) {
  table.places[0][character] = value << 2;
  table.places[1][character] = (value >> 4) | (value & 15) << 12;
  table.places[2][character] = (value >> 2) << 8 | (value & 3) << 22;
  table.places[3][character] = value << 16;
}

constexpr DecodeTable MakeDecodeTable(std::string_view alphabet) {
  DecodeTable table{};
  for (auto& place : table.places) place.fill(kOutside);
  for (size_t value = 0; value < alphabet.size(); ++value) {
    SetCharacter(table, static_cast<uint8_t>(alphabet[value]), static_cast<uint32_t>(value));
  }
  return table;
}

constexpr DecodeTable MakeUuDecodeTable() {
  DecodeTable table = MakeDecodeTable(kUuAlphabet);
  SetCharacter(table, ' ', 0);
  return table;
}

constexpr EncodeTable kBase64Encode = MakeEncodeTable(kBase64Alphabet);
constexpr EncodeTable kUuEncode = MakeEncodeTable(kUuAlphabet);
constexpr DecodeTable kBase64Decode = MakeDecodeTable(kBase64Alphabet);
constexpr DecodeTable kUuDecode = MakeUuDecodeTable();

// Both builds are for processors that keep the lowest byte first and load from any address.
template <typename Word>
Word Load(const uint8_t* from) {
  Word word = 0;
  std::memcpy(&word, from, sizeof word);
  return word;
}

template <typename Word>
void Store(Word word, uint8_t* to) {
  std::memcpy(to, &word, sizeof word);
}

// Six bytes of a word of eight, turned so that the first one is the highest. Reads all eight.
inline void EncodeSix(const EncodeTable& table, const uint8_t* in, uint8_t* out) {
  const uint64_t word = __builtin_bswap64(Load<uint64_t>(in));
  Store(table[static_cast<size_t>(word >> 52)], out);
  Store(table[static_cast<size_t>(word >> 40 & 0xFFF)], out + 2);
  Store(table[static_cast<size_t>(word >> 28 & 0xFFF)], out + 4);
  Store(table[static_cast<size_t>(word >> 16 & 0xFFF)], out + 6);
}

// That many times, without a loop.
template <size_t... kIndex>
void EncodeSixes(const EncodeTable& table, const uint8_t* in, uint8_t* out,
                 std::index_sequence<kIndex...> /*times*/) {
  (EncodeSix(table, in + kIndex * 6, out + kIndex * 8), ...);
}

inline void EncodeThree(const EncodeTable& table, const uint8_t* in, uint8_t* out) {
  Store(table[static_cast<size_t>(in[0] << 4 | in[1] >> 4)], out);
  Store(table[static_cast<size_t>((in[1] & 15) << 8 | in[2])], out + 2);
}

void Encode(const EncodeTable& table, const uint8_t* in, size_t bytes, uint8_t* out) {
  size_t done = 0;
  for (; bytes - done >= 20; done += 18, out += 24) {
    EncodeSixes(table, in + done, out, std::make_index_sequence<3>());
  }
  for (; bytes - done >= 8; done += 6, out += 8) EncodeSix(table, in + done, out);
  for (; done < bytes; done += 3, out += 4) EncodeThree(table, in + done, out);
}

inline uint32_t GroupBytes(const DecodeTable& table, const uint8_t* in) {
  return table.places[0][in[0]] | table.places[1][in[1]] | table.places[2][in[2]] |
         table.places[3][in[3]];
}

// Writes a byte behind the six, and returns kOutside with other bits when a character is outside
// the alphabet. Taking one group byte by byte and the other one out of a word keeps both the loads
// and the arithmetic of the processor busy.
inline uint32_t DecodeEight(const DecodeTable& table, const uint8_t* in, uint8_t* out) {
  const uint32_t first = GroupBytes(table, in);
  const auto word = Load<uint32_t>(in + 4);
  const uint32_t second = table.places[0][word & 255] | table.places[1][word >> 8 & 255] |
                          table.places[2][word >> 16 & 255] | table.places[3][word >> 24];
  Store(first, out);
  Store(second, out + 3);
  return first | second;
}

// The same of a single group, but nothing is written behind its bytes.
inline uint32_t DecodeFour(const DecodeTable& table, const uint8_t* in, uint8_t* out) {
  const uint32_t group = GroupBytes(table, in);
  Store(static_cast<uint16_t>(group), out);
  out[2] = static_cast<uint8_t>(group >> 16);
  return group;
}

size_t Decode(const DecodeTable& table, const uint8_t* in, size_t length, uint8_t* out) {
  size_t done = 0;
  for (; length - done >= 12; done += 8, out += 6) {
    if ((DecodeEight(table, in + done, out) & kOutside) != 0) break;
  }
  for (; length - done >= 4; done += 4, out += 3) {
    if ((DecodeFour(table, in + done, out) & kOutside) != 0) break;
  }
  return done;
}

bool DecodeLine(const uint8_t* in, uint8_t* out) {
  if (in[kBase64LineCharacters] != '\r' || in[kBase64LineCharacters + 1] != '\n') return false;
  uint32_t all = 0;
  for (size_t eights = 0; eights < 9; ++eights) {
    all |= DecodeEight(kBase64Decode, in + eights * 8, out + eights * 6);
  }
  all |= DecodeFour(kBase64Decode, in + 72, out + 54);
  return (all & kOutside) == 0;
}

void EncodeBase64(const uint8_t* in, size_t bytes, uint8_t* out) {
  Encode(kBase64Encode, in, bytes, out);
}

size_t DecodeBase64(const uint8_t* in, size_t length, uint8_t* out) {
  return Decode(kBase64Decode, in, length, out);
}

void EncodeBase64Lines(const uint8_t* in, size_t lines, uint8_t* out) {
  for (; lines != 0; --lines, in += kBase64LineBytes, out += kBase64LineSize) {
    EncodeSixes(kBase64Encode, in, out, std::make_index_sequence<9>());
    EncodeThree(kBase64Encode, in + 54, out + 72);
    out[kBase64LineCharacters] = '\r';
    out[kBase64LineCharacters + 1] = '\n';
  }
}

size_t DecodeBase64Lines(const uint8_t* in, size_t lines, uint8_t* out) {
  size_t done = 0;
  while (done < lines && DecodeLine(in + done * kBase64LineSize, out + done * kBase64LineBytes)) {
    ++done;
  }
  return done;
}

void EncodeUu(const uint8_t* in, size_t bytes, uint8_t* out) {
  Encode(kUuEncode, in, bytes, out);
}

size_t DecodeUu(const uint8_t* in, size_t length, uint8_t* out) {
  return Decode(kUuDecode, in, length, out);
}

struct Marker {
  static uint64_t Marks(const uint8_t* block) {
    uint64_t marks = 0;
    for (size_t i = 0; i < kMarkBlock; ++i) {
      const bool marked = block[i] == '=' || block[i] == '\r' || block[i] == '\n';
      marks |= (marked ? uint64_t{1} : uint64_t{0}) << i;
    }
    return marks;
  }
};

__attribute__((flatten)) size_t DecodeQuotedPrintable(const uint8_t* in, size_t size,
                                                      uint8_t* out) {
  QuotedPrintableDecoder<Marker> decoder(in, size, out);
  return static_cast<size_t>(decoder.Run() - out);
}

}  // namespace

const CodecKernel kScalarKernel = {"scalar",          EncodeBase64,         DecodeBase64,
                                   EncodeBase64Lines, DecodeBase64Lines,    EncodeUu,
                                   DecodeUu,          DecodeQuotedPrintable};

}  // namespace quillon
