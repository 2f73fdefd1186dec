// 24 bytes and 32 characters at a time. What is shorter goes to the SSSE3 kernel, which every such
// processor can run.
#include <immintrin.h>

#include "codec/kernels/NibbleTables.h"
#include "codec/kernels/QuotedPrintableDecoder.h"
#include "codec/kernels/VectorKernels.h"

namespace quillon {
namespace {

#define QUILLON_AVX2 __attribute__((target("avx2"))) inline

// The same 16 entries in both halves.
QUILLON_AVX2 __m256i Table(const std::array<uint8_t, 16>& entries) {
  return _mm256_broadcastsi128_si256(
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(entries.data())));
}

// 16 bytes from each address.
QUILLON_AVX2 __m256i LoadHalves(const uint8_t* first, const uint8_t* second) {
  const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(first));
  const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(second));
  return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
}

// 24 bytes as Sextets wants them: of each group the second, first, third and second byte. Three
// ways to load them, each for memory that the others must not read.

// Reads 4 bytes behind them.
QUILLON_AVX2 __m256i SpreadFromStart(const uint8_t* from) {
  return _mm256_shuffle_epi8(LoadHalves(from, from + 12),
                             _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,  //
                                              1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
}

// Reads 4 bytes before them.
QUILLON_AVX2 __m256i SpreadToEnd(const uint8_t* from) {
  return _mm256_shuffle_epi8(
      LoadHalves(from - 4, from + 8),
      _mm256_setr_epi8(5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14,  //
                       5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14));
}

// Reads 4 bytes on both sides, which is the fastest.
QUILLON_AVX2 __m256i SpreadWithin(const uint8_t* from) {
  return _mm256_shuffle_epi8(
      _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from - 4)),
      _mm256_setr_epi8(5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14,  //
                       1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
}

// The four 6-bit values of each group.
QUILLON_AVX2 __m256i Sextets(__m256i spread) {
  const __m256i even = _mm256_mulhi_epu16(_mm256_and_si256(spread, _mm256_set1_epi32(0x0FC0FC00)),
                                          _mm256_set1_epi32(0x04000040));
  const __m256i odd = _mm256_mullo_epi16(_mm256_and_si256(spread, _mm256_set1_epi32(0x003F03F0)),
                                         _mm256_set1_epi32(0x01000010));
  return _mm256_or_si256(even, odd);
}

// Puts the 6-bit values of each group together, in the first 24 bytes.
QUILLON_AVX2 __m256i Bytes(__m256i values) {
  const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
  const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
  const __m256i packed =
      _mm256_shuffle_epi8(groups, _mm256_broadcastsi128_si256(_mm_setr_epi8(
                                      2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1)));
  return _mm256_permutevar8x32_epi32(packed, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
}

struct Base64 {
  QUILLON_AVX2 static __m256i Characters(__m256i values) {
    const __m256i beyondCapitals = _mm256_cmpgt_epi8(values, _mm256_set1_epi8(25));
    const __m256i entry =
        _mm256_sub_epi8(_mm256_subs_epu8(values, _mm256_set1_epi8(51)), beyondCapitals);
    return _mm256_add_epi8(values, _mm256_shuffle_epi8(Table(kNibbleTables.toCharacter), entry));
  }

  // False when a character is outside the alphabet.
  QUILLON_AVX2 static bool Values(__m256i& characters) {
    const __m256i low = _mm256_and_si256(characters, _mm256_set1_epi8(15));
    __m256i high = _mm256_and_si256(_mm256_srli_epi16(characters, 4), _mm256_set1_epi8(15));
    const __m256i pattern = _mm256_shuffle_epi8(Table(kNibbleTables.patternOfHigh), high);
    const __m256i outside = _mm256_shuffle_epi8(Table(kNibbleTables.outsideByLow), low);
    if (_mm256_testz_si256(pattern, outside) == 0) return false;
    // From 2 to 1 for "/".
    high = _mm256_add_epi8(high, _mm256_cmpeq_epi8(characters, _mm256_set1_epi8('/')));
    characters =
        _mm256_add_epi8(characters, _mm256_shuffle_epi8(Table(kNibbleTables.toValue), high));
    return true;
  }
};

struct Uu {
  QUILLON_AVX2 static __m256i Characters(__m256i values) {
    const __m256i zero = _mm256_cmpeq_epi8(values, _mm256_setzero_si256());
    return _mm256_add_epi8(values, _mm256_or_si256(_mm256_set1_epi8(32),
                                                   _mm256_and_si256(zero, _mm256_set1_epi8(64))));
  }

  QUILLON_AVX2 static bool Values(__m256i& characters) {
    const __m256i values = _mm256_sub_epi8(characters, _mm256_set1_epi8(32));
    const __m256i inside = _mm256_cmpeq_epi8(_mm256_min_epu8(values, _mm256_set1_epi8(64)), values);
    characters = _mm256_and_si256(values, _mm256_set1_epi8(63));
    return _mm256_movemask_epi8(inside) == -1;
  }
};

template <typename Alphabet>
QUILLON_AVX2 void EncodeBlock(__m256i spread, uint8_t* out) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), Alphabet::Characters(Sextets(spread)));
}

template <typename Alphabet>
QUILLON_AVX2 void Encode(const uint8_t* in, size_t bytes, uint8_t* out, EncodeGroups rest) {
  if (bytes < 28) return rest(in, bytes, out);
  EncodeBlock<Alphabet>(SpreadFromStart(in), out);
  size_t done = 24;
  for (; bytes - done >= 28; done += 24) {
    EncodeBlock<Alphabet>(SpreadWithin(in + done), out + done / 3 * 4);
  }
  if (bytes - done > 24) {
    EncodeBlock<Alphabet>(SpreadToEnd(in + done), out + done / 3 * 4);
    done += 24;
  }
  // The last 24 bytes, some of them once more.
  if (done < bytes) EncodeBlock<Alphabet>(SpreadToEnd(in + bytes - 24), out + (bytes - 24) / 3 * 4);
}

// Writes 24 bytes, and 8 of no meaning behind them when there is `room` for them.
template <typename Alphabet>
QUILLON_AVX2 bool DecodeBlock(const uint8_t* in, uint8_t* out, bool room) {
  __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in));
  if (!Alphabet::Values(block)) return false;
  block = Bytes(block);
  if (room) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), block);
  } else {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(block));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 16), _mm256_extracti128_si256(block, 1));
  }
  return true;
}

template <typename Alphabet>
QUILLON_AVX2 size_t Decode(const uint8_t* in, size_t length, uint8_t* out, DecodeGroups rest) {
  length = length / 4 * 4;
  size_t done = 0;
  while (length - done >= 32 &&
         DecodeBlock<Alphabet>(in + done, out + done / 4 * 3, length - done >= 44)) {
    done += 32;
  }
  if (length - done < 32 && done != length && length >= 32 &&
      DecodeBlock<Alphabet>(in + length - 32, out + (length - 32) / 4 * 3, false)) {
    return length;
  }
  return done + rest(in + done, length - done, out + done / 4 * 3);
}

QUILLON_AVX2 void EncodeBase64(const uint8_t* in, size_t bytes, uint8_t* out) {
  Encode<Base64>(in, bytes, out, kSsse3Kernel.encodeBase64);
}

QUILLON_AVX2 size_t DecodeBase64(const uint8_t* in, size_t length, uint8_t* out) {
  return Decode<Base64>(in, length, out, kSsse3Kernel.decodeBase64);
}

QUILLON_AVX2 void EncodeBase64Lines(const uint8_t* in, size_t lines, uint8_t* out) {
  for (; lines != 0; --lines, in += kBase64LineBytes, out += kBase64LineSize) {
    EncodeBlock<Base64>(SpreadFromStart(in), out);
    EncodeBlock<Base64>(SpreadWithin(in + 24), out + 32);
    EncodeBlock<Base64>(SpreadToEnd(in + 33), out + 44);
    out[kBase64LineCharacters] = '\r';
    out[kBase64LineCharacters + 1] = '\n';
  }
}

// The last block of a line begins within the one before it.
QUILLON_AVX2 bool DecodeLine(const uint8_t* in, uint8_t* out) {
  return in[kBase64LineCharacters] == '\r' && in[kBase64LineCharacters + 1] == '\n' &&
         DecodeBlock<Base64>(in, out, true) && DecodeBlock<Base64>(in + 32, out + 24, true) &&
         DecodeBlock<Base64>(in + 44, out + 33, false);
}

QUILLON_AVX2 size_t DecodeBase64Lines(const uint8_t* in, size_t lines, uint8_t* out) {
  size_t done = 0;
  while (done < lines && DecodeLine(in + done * kBase64LineSize, out + done * kBase64LineBytes)) {
    ++done;
  }
  return done;
}

QUILLON_AVX2 void EncodeUu(const uint8_t* in, size_t bytes, uint8_t* out) {
  Encode<Uu>(in, bytes, out, kSsse3Kernel.encodeUu);
}

QUILLON_AVX2 size_t DecodeUu(const uint8_t* in, size_t length, uint8_t* out) {
  return Decode<Uu>(in, length, out, kSsse3Kernel.decodeUu);
}

// A bit for each byte that is all ones, of two halves of a block.
QUILLON_AVX2 uint64_t Mask(__m256i first, __m256i second) {
  return static_cast<uint32_t>(_mm256_movemask_epi8(first)) |
         uint64_t{static_cast<uint32_t>(_mm256_movemask_epi8(second))} << 32;
}

QUILLON_AVX2 __m256i Equal(__m256i bytes, char character) {
  return _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(character));
}

QUILLON_AVX2 __m256i Special(__m256i bytes) {
  return _mm256_or_si256(Equal(bytes, '='),
                         _mm256_or_si256(Equal(bytes, '\r'), Equal(bytes, '\n')));
}

struct Marker {
  QUILLON_AVX2 static uint64_t Marks(const uint8_t* block) {
    const __m256i first = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(block));
    const __m256i second = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(block + 32));
    return Mask(Special(first), Special(second));
  }
};

__attribute__((flatten)) QUILLON_AVX2 size_t DecodeQuotedPrintable(const uint8_t* in, size_t size,
                                                                   uint8_t* out) {
  QuotedPrintableDecoder<Marker> decoder(in, size, out);
  return static_cast<size_t>(decoder.Run() - out);
}

#undef QUILLON_AVX2

}  // namespace

const CodecKernel kAvx2Kernel = {
    "avx2",   EncodeBase64, DecodeBase64,         EncodeBase64Lines, DecodeBase64Lines,
    EncodeUu, DecodeUu,     DecodeQuotedPrintable};

}  // namespace quillon
