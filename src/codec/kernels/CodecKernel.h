// The inner loops of base64 and uuencode, groups of 3 bytes to groups of 4 characters and back, and
// of quoted-printable.
//
// The scalar kernel is the truth. The others do the same with the vector instructions of one
// generation of processors and are chosen when the program runs; every one handles whatever its
// blocks leave over through the scalar kernel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quillon {

// Writes bytes / 3 * 4 characters; `bytes` is a multiple of 3.
using EncodeGroups = void (*)(const uint8_t* in, size_t bytes, uint8_t* out);

// Decodes groups from the start of the `length` characters for as long as all four characters of a
// group belong to the alphabet, and returns how many characters that were, a multiple of 4. `out`
// has room for length / 4 * 3 bytes; those behind the decoded ones may have been written to. The
// uuencode alphabet is " " to "`" with both meaning 0.
using DecodeGroups = size_t (*)(const uint8_t* in, size_t length, uint8_t* out);

// Writes `lines` lines of 76 characters and CR LF, each of 57 bytes.
using EncodeLines = void (*)(const uint8_t* in, size_t lines, uint8_t* out);

// Decodes lines of exactly that form for as long as there are any among the `lines` that `in` has
// room for, and returns how many. `out` has room for all; bytes behind the decoded ones may have
// been written to.
using DecodeLines = size_t (*)(const uint8_t* in, size_t lines, uint8_t* out);

inline constexpr size_t kBase64LineBytes = 57;
inline constexpr size_t kBase64LineCharacters = 76;
inline constexpr size_t kBase64LineSize = kBase64LineCharacters + 2;

// Decodes lines of quoted-printable text and returns the number of bytes written. Line ends, which
// are CR LF, LF or CR, come out as CR LF, without the blanks before them; "=" before them joins the
// lines. `out` has room for twice the text and does not overlap it; what is behind the decoded
// bytes may have been written to.
using DecodeText = size_t (*)(const uint8_t* in, size_t size, uint8_t* out);

struct CodecKernel {
  const char* name;
  EncodeGroups encodeBase64;
  DecodeGroups decodeBase64;
  EncodeLines encodeBase64Lines;
  DecodeLines decodeBase64Lines;
  EncodeGroups encodeUu;
  DecodeGroups decodeUu;
  DecodeText decodeQuotedPrintable;
};

extern const CodecKernel kScalarKernel;

// The fastest one that this processor can run.
const CodecKernel& BestKernel();

// All that this processor can run, the scalar one first.
std::vector<const CodecKernel*> UsableKernels();

}  // namespace quillon
