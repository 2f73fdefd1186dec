// Decoding of quoted-printable text (RFC 2045, section 6.7).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "codec/kernels/CodecKernel.h"

namespace quillon {

// Decodes a line, given without its line end, and returns the number of bytes written, never more
// than the line has. `softBreak` tells whether the line ends in "=", so that the next one continues
// it. Blanks at the end of the line, which only transport can have added, are dropped; "=" before
// anything but two hexadecimal digits stands for itself.
size_t DecodeQuotedPrintableLine(std::span<const uint8_t> line, uint8_t* out, bool& softBreak);

// The same of many lines at once, which is faster, given without the line end of the last one.
// Those within are CR LF, LF or CR and become CR LF, so `out` needs room for twice the text.
size_t DecodeQuotedPrintableLines(std::span<const uint8_t> lines, uint8_t* out, bool& softBreak,
                                  const CodecKernel& kernel = BestKernel());

// How much of the start of a line, whose rest is not known yet, can be decoded by itself with the
// function below: not blanks at its end, nor an "=" without its two digits.
size_t QuotedPrintableCut(std::span<const uint8_t> start);

// Decodes the middle of a line: as above, but there are no blanks to drop and no soft break to
// find.
size_t DecodeQuotedPrintablePiece(std::span<const uint8_t> piece, uint8_t* out);

}  // namespace quillon
