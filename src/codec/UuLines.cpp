#include "codec/UuLines.h"

#include <algorithm>

namespace quillon {
namespace {

constexpr uint8_t kShortBlockFiller = 97;

// Writes one line; `length` of the bytes in `groups` are data.
uint8_t* EncodeLine(std::span<const uint8_t> groups, size_t length, uint8_t* out,
                    const CodecKernel& kernel) {
  *out++ = static_cast<uint8_t>(' ' + length);
  kernel.encodeUu(groups.data(), groups.size(), out);
  out += groups.size() / 3 * 4;
  *out++ = '\r';
  *out++ = '\n';
  return out;
}

// The line end at `text`: 0, 1 or 2 characters.
size_t LineEndLength(std::span<const uint8_t> text) {
  if (text[0] == '\r') return text.size() > 1 && text[1] == '\n' ? 2 : 1;
  return text[0] == '\n' ? 1 : 0;
}

}  // namespace

size_t UuEncodedSize(size_t bytes) {
  const size_t rest = bytes % kUuLineBytes;
  const size_t lastLine = rest == 0 ? 0 : 1 + (rest + 2) / 3 * 4 + 2;
  return bytes / kUuLineBytes * kUuLineSize + lastLine;
}

size_t EncodeUuLines(std::span<const uint8_t> in, uint8_t* out, const CodecKernel& kernel) {
  const uint8_t* const start = out;
  const size_t rest = in.size() % kUuLineBytes;
  for (size_t done = 0; done + kUuLineBytes <= in.size(); done += kUuLineBytes) {
    out = EncodeLine(in.subspan(done, kUuLineBytes), kUuLineBytes, out, kernel);
  }
  if (rest != 0) {
    const bool shortBlock = in.size() % kUuBlockBytes < 3;
    const size_t missing = (3 - rest % 3) % 3;
    std::array<uint8_t, kUuLineBytes> line{};
    std::copy_n(in.end() - static_cast<std::ptrdiff_t>(rest), rest, line.begin());
    for (size_t i = 0; i < missing; ++i) {
      line[rest + i] = shortBlock ? kShortBlockFiller : in[in.size() - missing + i];
    }
    out = EncodeLine(std::span(line).first(rest + missing), rest, out, kernel);
  }
  return static_cast<size_t>(out - start);
}

size_t DecodeFullUuLines(std::span<const uint8_t> text, uint8_t* out, size_t& written,
                         const CodecKernel& kernel) {
  constexpr uint8_t kFullLine = ' ' + kUuLineBytes;
  const size_t available = text.size();
  // Two more characters show whether a CR is followed by a LF.
  while (text.size() >= kUuLineSize && text[0] == kFullLine) {
    const size_t lineEnd = LineEndLength(text.subspan(1 + kUuLineCharacters));
    if (lineEnd == 0) break;
    const size_t taken = kernel.decodeUu(text.data() + 1, kUuLineCharacters, out);
    if (taken != kUuLineCharacters) break;
    out += kUuLineBytes;
    written += kUuLineBytes;
    text = text.subspan(1 + kUuLineCharacters + lineEnd);
  }
  return available - text.size();
}

void DecodeUuGroups(std::span<const uint8_t> in, size_t groups, uint8_t* out,
                    const CodecKernel& kernel) {
  const size_t characters = std::min(in.size() / 4, groups) * 4;
  const size_t taken = kernel.decodeUu(in.data(), characters, out);
  out += taken / 4 * 3;
  for (size_t at = taken; at < groups * 4; at += 4) {
    std::array<uint8_t, 4> values{};
    for (size_t i = 0; i < values.size(); ++i) {
      if (at + i < in.size()) values[i] = UuValue(in[at + i]);
    }
    *out++ = static_cast<uint8_t>(values[0] << 2 | values[1] >> 4);
    *out++ = static_cast<uint8_t>(values[1] << 4 | values[2] >> 2);
    *out++ = static_cast<uint8_t>(values[2] << 6 | values[3]);
  }
}

}  // namespace quillon
