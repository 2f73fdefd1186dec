// The plain kernel: two characters per look-up when encoding, one look-up per character when
// decoding.
#include <array>
#include <cstring>
#include <string_view>

#include "codec/kernels/CodecKernel.h"

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

void Encode(const EncodeTable& table, const uint8_t* in, size_t bytes, uint8_t* out) {
  size_t done = 0;
  // Six bytes of a word of eight, turned so that the first one is the highest.
  for (; bytes - done >= 8; done += 6, out += 8) {
    const uint64_t word = __builtin_bswap64(Load<uint64_t>(in + done));
    const uint64_t first = table[static_cast<size_t>(word >> 52)];
    const uint64_t second = table[static_cast<size_t>(word >> 40 & 0xFFF)];
    const uint64_t third = table[static_cast<size_t>(word >> 28 & 0xFFF)];
    const uint64_t fourth = table[static_cast<size_t>(word >> 16 & 0xFFF)];
    Store(first | second << 16 | third << 32 | fourth << 48, out);
  }
  for (; done < bytes; done += 3, out += 4) {
    Store(table[static_cast<size_t>(in[done] << 4 | in[done + 1] >> 4)], out);
    Store(table[static_cast<size_t>((in[done + 1] & 15) << 8 | in[done + 2])], out + 2);
  }
}

uint32_t GroupBytes(const DecodeTable& table, const uint8_t* in) {
  return table.places[0][in[0]] | table.places[1][in[1]] | table.places[2][in[2]] |
         table.places[3][in[3]];
}

size_t Decode(const DecodeTable& table, const uint8_t* in, size_t length, uint8_t* out) {
  size_t done = 0;
  // Four groups, each of which leaves a byte that belongs to the one behind.
  for (; length - done >= 20; done += 16, out += 12) {
    const uint32_t first = GroupBytes(table, in + done);
    const uint32_t second = GroupBytes(table, in + done + 4);
    const uint32_t third = GroupBytes(table, in + done + 8);
    const uint32_t fourth = GroupBytes(table, in + done + 12);
    if (((first | second | third | fourth) & kOutside) != 0) break;
    Store(first, out);
    Store(second, out + 3);
    Store(third, out + 6);
    Store(fourth, out + 9);
  }
  for (; length - done >= 4; done += 4, out += 3) {
    const uint32_t group = GroupBytes(table, in + done);
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

void EncodeBase64Lines(const uint8_t* in, size_t lines, uint8_t* out) {
  for (; lines != 0; --lines, in += kBase64LineBytes, out += kBase64LineSize) {
    Encode(kBase64Encode, in, kBase64LineBytes, out);
    out[kBase64LineCharacters] = '\r';
    out[kBase64LineCharacters + 1] = '\n';
  }
}

size_t DecodeBase64Lines(const uint8_t* in, size_t lines, uint8_t* out) {
  size_t done = 0;
  for (; done < lines; ++done, in += kBase64LineSize, out += kBase64LineBytes) {
    const bool ends = in[kBase64LineCharacters] == '\r' && in[kBase64LineCharacters + 1] == '\n';
    if (!ends || Decode(kBase64Decode, in, kBase64LineCharacters, out) != kBase64LineCharacters) {
      break;
    }
  }
  return done;
}

void EncodeUu(const uint8_t* in, size_t bytes, uint8_t* out) {
  Encode(kUuEncode, in, bytes, out);
}

size_t DecodeUu(const uint8_t* in, size_t length, uint8_t* out) {
  return Decode(kUuDecode, in, length, out);
}

size_t CopyUntilEquals(const uint8_t* in, size_t length, uint8_t* out) {
  size_t done = 0;
  for (; done < length && in[done] != '='; ++done) out[done] = in[done];
  return done;
}

}  // namespace

const CodecKernel kScalarKernel = {"scalar",          EncodeBase64, DecodeBase64, EncodeBase64Lines,
                                   DecodeBase64Lines, EncodeUu,     DecodeUu,     CopyUntilEquals};

}  // namespace quillon
