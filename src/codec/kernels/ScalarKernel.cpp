// The plain kernel: two characters per look-up when encoding, one look-up per character when
// decoding.
#include <array>
#include <string_view>

#include "codec/kernels/CodecKernel.h"

namespace quillon {
namespace {

constexpr std::string_view kBase64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kUuAlphabet =
    "`!\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_";

struct CharacterPair {
  uint8_t first;
  uint8_t second;
};

// The two characters of each 12-bit value.
using EncodeTable = std::array<CharacterPair, 4096>;

constexpr EncodeTable MakeEncodeTable(std::string_view alphabet) {
  EncodeTable table{};
  for (size_t value = 0; value < table.size(); ++value) {
    table[value] = {static_cast<uint8_t>(alphabet[value >> 6]),
                    static_cast<uint8_t>(alphabet[value & 63])};
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

void Encode(const EncodeTable& table, const uint8_t* in, size_t bytes, uint8_t* out) {
  for (const uint8_t* const end = in + bytes; in < end; in += 3, out += 4) {
    const CharacterPair head = table[static_cast<size_t>(in[0] << 4 | in[1] >> 4)];
    const CharacterPair tail = table[static_cast<size_t>((in[1] & 15) << 8 | in[2])];
    out[0] = head.first;
    out[1] = head.second;
    out[2] = tail.first;
    out[3] = tail.second;
  }
}

size_t Decode(const DecodeTable& table, const uint8_t* in, size_t length, uint8_t* out) {
  size_t done = 0;
  for (; length - done >= 4; done += 4, out += 3) {
    const uint32_t group = table.places[0][in[done]] | table.places[1][in[done + 1]] |
                           table.places[2][in[done + 2]] | table.places[3][in[done + 3]];
    if ((group & kOutside) != 0) break;
    out[0] = static_cast<uint8_t>(group);
    out[1] = static_cast<uint8_t>(group >> 8);
    out[2] = static_cast<uint8_t>(group >> 16);
  }
  return done;
}

void EncodeBase64(const uint8_t* in, size_t bytes, uint8_t* out) {
  Encode(kBase64Encode, in, bytes, out);
}

size_t DecodeBase64(const uint8_t* in, size_t length, uint8_t* out) {
  return Decode(kBase64Decode, in, length, out);
}

void EncodeUu(const uint8_t* in, size_t bytes, uint8_t* out) {
  Encode(kUuEncode, in, bytes, out);
}

size_t DecodeUu(const uint8_t* in, size_t length, uint8_t* out) {
  return Decode(kUuDecode, in, length, out);
}

}  // namespace

const CodecKernel kScalarKernel = {"scalar", EncodeBase64, DecodeBase64, EncodeUu, DecodeUu};

}  // namespace quillon
