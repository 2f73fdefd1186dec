// 12 bytes and 16 characters at a time, with the byte shuffle of SSSE3.
#include <cstring>
#include <immintrin.h>

#include "codec/kernels/NibbleTables.h"
#include "codec/kernels/VectorKernels.h"

namespace quillon {
namespace {

#define QUILLON_SSSE3 __attribute__((target("ssse3"))) inline

QUILLON_SSSE3 __m128i Load(const void* from) {
  return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

// The four 6-bit values of each of the groups in the first 12 bytes.
QUILLON_SSSE3 __m128i Sextets(__m128i bytes) {
  const __m128i spread =
      _mm_shuffle_epi8(bytes, _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
  // Multiplications move the odd and the even values to their places.
  const __m128i even = _mm_mulhi_epu16(_mm_and_si128(spread, _mm_set1_epi32(0x0FC0FC00)),
                                       _mm_set1_epi32(0x04000040));
  const __m128i odd = _mm_mullo_epi16(_mm_and_si128(spread, _mm_set1_epi32(0x003F03F0)),
                                      _mm_set1_epi32(0x01000010));
  return _mm_or_si128(even, odd);
}

// Puts the 6-bit values of each group together, in the first 12 bytes.
QUILLON_SSSE3 __m128i Bytes(__m128i values) {
  const __m128i pairs = _mm_maddubs_epi16(values, _mm_set1_epi32(0x01400140));
  const __m128i groups = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
  return _mm_shuffle_epi8(groups,
                          _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
}

struct Base64 {
  QUILLON_SSSE3 static __m128i Characters(__m128i values) {
    const __m128i beyondCapitals = _mm_cmpgt_epi8(values, _mm_set1_epi8(25));
    const __m128i entry = _mm_sub_epi8(_mm_subs_epu8(values, _mm_set1_epi8(51)), beyondCapitals);
    return _mm_add_epi8(values, _mm_shuffle_epi8(Load(kNibbleTables.toCharacter.data()), entry));
  }

  // False when a character is outside the alphabet.
  QUILLON_SSSE3 static bool Values(__m128i& characters) {
    const __m128i low = _mm_and_si128(characters, _mm_set1_epi8(15));
    __m128i high = _mm_and_si128(_mm_srli_epi16(characters, 4), _mm_set1_epi8(15));
    const __m128i outside =
        _mm_and_si128(_mm_shuffle_epi8(Load(kNibbleTables.patternOfHigh.data()), high),
                      _mm_shuffle_epi8(Load(kNibbleTables.outsideByLow.data()), low));
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(outside, _mm_setzero_si128())) != 0xFFFF) return false;
    // From 2 to 1 for "/".
    high = _mm_add_epi8(high, _mm_cmpeq_epi8(characters, _mm_set1_epi8('/')));
    characters =
        _mm_add_epi8(characters, _mm_shuffle_epi8(Load(kNibbleTables.toValue.data()), high));
    return true;
  }
};

struct Uu {
  QUILLON_SSSE3 static __m128i Characters(__m128i values) {
    const __m128i zero = _mm_cmpeq_epi8(values, _mm_setzero_si128());
    return _mm_add_epi8(values,
                        _mm_or_si128(_mm_set1_epi8(32), _mm_and_si128(zero, _mm_set1_epi8(64))));
  }

  QUILLON_SSSE3 static bool Values(__m128i& characters) {
    const __m128i values = _mm_sub_epi8(characters, _mm_set1_epi8(32));
    const __m128i inside = _mm_cmpeq_epi8(_mm_min_epu8(values, _mm_set1_epi8(64)), values);
    characters = _mm_and_si128(values, _mm_set1_epi8(63));
    return _mm_movemask_epi8(inside) == 0xFFFF;
  }
};

template <typename Alphabet>
QUILLON_SSSE3 void EncodeBlock(__m128i bytes, uint8_t* out) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), Alphabet::Characters(Sextets(bytes)));
}

// The 12 bytes there; reads the 4 before them instead of the 4 behind.
QUILLON_SSSE3 __m128i LoadAtEnd(const uint8_t* from) {
  return _mm_srli_si128(Load(from - 4), 4);
}

template <typename Alphabet>
QUILLON_SSSE3 void Encode(const uint8_t* in, size_t bytes, uint8_t* out, EncodeGroups rest) {
  if (bytes < 16) return rest(in, bytes, out);
  size_t done = 0;
  for (; bytes - done >= 16; done += 12) EncodeBlock<Alphabet>(Load(in + done), out + done / 3 * 4);
  if (bytes - done > 12) {
    EncodeBlock<Alphabet>(LoadAtEnd(in + done), out + done / 3 * 4);
    done += 12;
  }
  // The last 12 bytes, some of them once more.
  if (done < bytes) EncodeBlock<Alphabet>(LoadAtEnd(in + bytes - 12), out + (bytes - 12) / 3 * 4);
}

// Writes 12 bytes and no more.
template <typename Alphabet>
QUILLON_SSSE3 bool DecodeBlock(const uint8_t* in, uint8_t* out) {
  __m128i block = Load(in);
  if (!Alphabet::Values(block)) return false;
  block = Bytes(block);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out), block);
  const int last = _mm_cvtsi128_si32(_mm_srli_si128(block, 8));
  std::memcpy(out + 8, &last, sizeof last);
  return true;
}

template <typename Alphabet>
QUILLON_SSSE3 size_t Decode(const uint8_t* in, size_t length, uint8_t* out, DecodeGroups rest) {
  length = length / 4 * 4;
  size_t done = 0;
  while (length - done >= 16 && DecodeBlock<Alphabet>(in + done, out + done / 4 * 3)) done += 16;
  if (length - done < 16 && done != length && length >= 16 &&
      DecodeBlock<Alphabet>(in + length - 16, out + (length - 16) / 4 * 3)) {
    return length;
  }
  return done + rest(in + done, length - done, out + done / 4 * 3);
}

QUILLON_SSSE3 void EncodeBase64(const uint8_t* in, size_t bytes, uint8_t* out) {
  Encode<Base64>(in, bytes, out, kScalarKernel.encodeBase64);
}

QUILLON_SSSE3 size_t DecodeBase64(const uint8_t* in, size_t length, uint8_t* out) {
  return Decode<Base64>(in, length, out, kScalarKernel.decodeBase64);
}

QUILLON_SSSE3 void EncodeBase64Lines(const uint8_t* in, size_t lines, uint8_t* out) {
  for (; lines != 0; --lines, in += kBase64LineBytes, out += kBase64LineSize) {
    for (size_t block = 0; block < 4; ++block) {
      EncodeBlock<Base64>(Load(in + 12 * block), out + 16 * block);
    }
    EncodeBlock<Base64>(LoadAtEnd(in + 45), out + 60);
    out[kBase64LineCharacters] = '\r';
    out[kBase64LineCharacters + 1] = '\n';
  }
}

// The last block of a line begins within the one before it.
QUILLON_SSSE3 bool DecodeLine(const uint8_t* in, uint8_t* out) {
  return in[kBase64LineCharacters] == '\r' && in[kBase64LineCharacters + 1] == '\n' &&
         DecodeBlock<Base64>(in, out) && DecodeBlock<Base64>(in + 16, out + 12) &&
         DecodeBlock<Base64>(in + 32, out + 24) && DecodeBlock<Base64>(in + 48, out + 36) &&
         DecodeBlock<Base64>(in + 60, out + 45);
}

QUILLON_SSSE3 size_t DecodeBase64Lines(const uint8_t* in, size_t lines, uint8_t* out) {
  size_t done = 0;
  while (done < lines && DecodeLine(in + done * kBase64LineSize, out + done * kBase64LineBytes)) {
    ++done;
  }
  return done;
}

QUILLON_SSSE3 void EncodeUu(const uint8_t* in, size_t bytes, uint8_t* out) {
  Encode<Uu>(in, bytes, out, kScalarKernel.encodeUu);
}

QUILLON_SSSE3 size_t DecodeUu(const uint8_t* in, size_t length, uint8_t* out) {
  return Decode<Uu>(in, length, out, kScalarKernel.decodeUu);
}

#undef QUILLON_SSSE3

}  // namespace

const CodecKernel kSsse3Kernel = {
    "ssse3",           EncodeBase64, DecodeBase64, EncodeBase64Lines,
    DecodeBase64Lines, EncodeUu,     DecodeUu,     DecodeQuotedPrintableSse2};

}  // namespace quillon
