// Encodes 12 bytes at a time with SSE2, which cannot move single bytes about: groups are loaded one
// by one, the rest is done for four at once.
#include <cstring>
#include <immintrin.h>

#include "codec/kernels/QuotedPrintableDecoder.h"
#include "codec/kernels/VectorKernels.h"

namespace quillon {
namespace {

#define QUILLON_SSE2 __attribute__((target("sse2"))) inline

// Three bytes as a number, the first one highest. Reads four.
QUILLON_SSE2 int LoadGroup(const uint8_t* in) {
  uint32_t bytes = 0;
  std::memcpy(&bytes, in, sizeof bytes);
  return static_cast<int>(__builtin_bswap32(bytes) >> 8);
}

QUILLON_SSE2 __m128i Sextets(const uint8_t* in) {
  const __m128i groups =
      _mm_set_epi32(LoadGroup(in + 9), LoadGroup(in + 6), LoadGroup(in + 3), LoadGroup(in));
  const __m128i first = _mm_srli_epi32(groups, 18);
  const __m128i second = _mm_and_si128(_mm_srli_epi32(groups, 4), _mm_set1_epi32(0x3F00));
  const __m128i third = _mm_and_si128(_mm_slli_epi32(groups, 10), _mm_set1_epi32(0x3F0000));
  const __m128i fourth = _mm_and_si128(_mm_slli_epi32(groups, 24), _mm_set1_epi32(0x3F000000));
  return _mm_or_si128(_mm_or_si128(first, second), _mm_or_si128(third, fourth));
}

// `step` where `chosen` is set.
QUILLON_SSE2 __m128i Step(__m128i chosen, int step) {
  return _mm_and_si128(chosen, _mm_set1_epi8(static_cast<char>(step)));
}

struct Base64 {
  QUILLON_SSE2 static __m128i Characters(__m128i values) {
    const auto above = [&](char value) __attribute__((target("sse2"))) {
      return _mm_cmpgt_epi8(values, _mm_set1_epi8(value));
    };
    // Each range adds what its distance from the value differs by from the range before.
    __m128i characters = _mm_add_epi8(values, _mm_set1_epi8('A'));
    characters = _mm_add_epi8(characters, Step(above(25), 'a' - 26 - 'A'));
    characters = _mm_add_epi8(characters, Step(above(51), '0' - 52 - ('a' - 26)));
    characters = _mm_add_epi8(characters, Step(above(61), '+' - 62 - ('0' - 52)));
    return _mm_add_epi8(characters, Step(above(62), '/' - 63 - ('+' - 62)));
  }
};

struct Uu {
  QUILLON_SSE2 static __m128i Characters(__m128i values) {
    const __m128i zero = _mm_cmpeq_epi8(values, _mm_setzero_si128());
    return _mm_add_epi8(values, _mm_or_si128(_mm_set1_epi8(32), Step(zero, 64)));
  }
};

template <typename Alphabet>
QUILLON_SSE2 void Encode(const uint8_t* in, size_t bytes, uint8_t* out, EncodeGroups rest) {
  size_t done = 0;
  // The last group of a block reads one byte behind it.
  for (; bytes - done >= 13; done += 12) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + done / 3 * 4),
                     Alphabet::Characters(Sextets(in + done)));
  }
  rest(in + done, bytes - done, out + done / 3 * 4);
}

QUILLON_SSE2 void EncodeBase64(const uint8_t* in, size_t bytes, uint8_t* out) {
  Encode<Base64>(in, bytes, out, kScalarKernel.encodeBase64);
}

QUILLON_SSE2 void EncodeBase64Lines(const uint8_t* in, size_t lines, uint8_t* out) {
  for (; lines != 0; --lines, in += kBase64LineBytes, out += kBase64LineSize) {
    Encode<Base64>(in, kBase64LineBytes, out, kScalarKernel.encodeBase64);
    out[kBase64LineCharacters] = '\r';
    out[kBase64LineCharacters + 1] = '\n';
  }
}

QUILLON_SSE2 void EncodeUu(const uint8_t* in, size_t bytes, uint8_t* out) {
  Encode<Uu>(in, bytes, out, kScalarKernel.encodeUu);
}

// Decoding this way takes more instructions than the look-ups of the scalar kernel.
size_t DecodeBase64(const uint8_t* in, size_t length, uint8_t* out) {
  return kScalarKernel.decodeBase64(in, length, out);
}

size_t DecodeBase64Lines(const uint8_t* in, size_t lines, uint8_t* out) {
  return kScalarKernel.decodeBase64Lines(in, lines, out);
}

size_t DecodeUu(const uint8_t* in, size_t length, uint8_t* out) {
  return kScalarKernel.decodeUu(in, length, out);
}

// A bit for each "=", CR and LF among the 16 bytes.
QUILLON_SSE2 uint64_t Find(const uint8_t* in) {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
  const __m128i lineEnds = _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('\r')),
                                        _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\n')));
  const __m128i found = _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('=')), lineEnds);
  return static_cast<uint64_t>(_mm_movemask_epi8(found));
}

struct Marker {
  QUILLON_SSE2 static uint64_t Marks(const uint8_t* in) {
    return Find(in) | Find(in + 16) << 16 | Find(in + 32) << 32 | Find(in + 48) << 48;
  }
};

}  // namespace

__attribute__((flatten, target("sse2"))) size_t DecodeQuotedPrintableSse2(const uint8_t* in,
                                                                          size_t size,
                                                                          uint8_t* out) {
  QuotedPrintableDecoder<Marker> decoder(in, size, out);
  return static_cast<size_t>(decoder.Run() - out);
}

#undef QUILLON_SSE2

const CodecKernel kSse2Kernel = {"sse2",
                                 EncodeBase64,
                                 DecodeBase64,
                                 EncodeBase64Lines,
                                 DecodeBase64Lines,
                                 EncodeUu,
                                 DecodeUu,
                                 DecodeQuotedPrintableSse2};

}  // namespace quillon
