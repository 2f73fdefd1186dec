#include "codec/Base64.h"

#include <algorithm>
#include <string_view>

namespace quillon {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<uint8_t, 256> MakeValues() {
  std::array<uint8_t, 256> values{};
  for (size_t byte = 0; byte < values.size(); ++byte) values[byte] = static_cast<uint8_t>(byte);
  for (size_t value = 0; value < kAlphabet.size(); ++value) {
    values[static_cast<uint8_t>(kAlphabet[value])] = static_cast<uint8_t>(value);
  }
  values['='] = kBase64Padding;
  return values;
}

constexpr std::array<uint8_t, 256> kValues = MakeValues();

constexpr bool IsSpace(uint8_t character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

// The line end at the start of the text: 0, 1 or 2 characters.
size_t LineEndLength(std::span<const uint8_t> text) {
  if (text.size() >= 2 && text[0] == '\r' && text[1] == '\n') return 2;
  return !text.empty() && (text[0] == '\n' || text[0] == '\r') ? 1 : 0;
}

}  // namespace

uint8_t Base64Value(uint8_t character) {
  return kValues[character];
}

uint8_t Base64Character(uint8_t value) {
  return value < kAlphabet.size() ? static_cast<uint8_t>(kAlphabet[value]) : value;
}

std::array<uint8_t, 3> Base64Bytes(const std::array<uint8_t, 4>& values) {
  return {static_cast<uint8_t>(values[0] << 2 | values[1] >> 4),
          static_cast<uint8_t>(values[1] << 4 | values[2] >> 2),
          static_cast<uint8_t>(values[2] << 6 | values[3])};
}

size_t Base64EncodedSize(size_t bytes) {
  const size_t rest = bytes % kBase64LineBytes;
  const size_t lastLine = rest == 0 ? 0 : (rest + 2) / 3 * 4 + 2;
  return bytes / kBase64LineBytes * kBase64LineSize + lastLine;
}

size_t EncodeBase64Lines(std::span<const uint8_t> in, uint8_t* out, const CodecKernel& kernel) {
  const size_t lines = in.size() / kBase64LineBytes;
  kernel.encodeBase64Lines(in.data(), lines, out);
  in = in.subspan(lines * kBase64LineBytes);
  if (in.empty()) return lines * kBase64LineSize;
  out += lines * kBase64LineSize;
  std::array<uint8_t, kBase64LineBytes> padded{};
  std::copy(in.begin(), in.end(), padded.begin());
  const size_t groups = (in.size() + 2) / 3;
  const size_t padding = groups * 3 - in.size();
  kernel.encodeBase64(padded.data(), groups * 3, out);
  out += groups * 4;
  std::fill_n(out - padding, padding, uint8_t{'='});
  out[0] = '\r';
  out[1] = '\n';
  return lines * kBase64LineSize + groups * 4 + 2;
}

size_t Base64Decoder::Decode(std::span<const uint8_t> in, uint8_t* out) {
  const uint8_t* const start = out;
  while (!in.empty()) {
    if (groupSize_ == 0) {
      if (column_ == 0) {
        const size_t lines =
            kernel_->decodeBase64Lines(in.data(), in.size() / kBase64LineSize, out);
        out += lines * kBase64LineBytes;
        in = in.subspan(lines * kBase64LineSize);
      }
      const size_t wanted = column_ == 0 ? std::min(in.size(), lineLength_) : in.size();
      const size_t taken = kernel_->decodeBase64(in.data(), wanted, out);
      out += taken / 4 * 3;
      column_ += taken;
      in = in.subspan(taken);
      if (const size_t lineEnd = LineEndLength(in); lineEnd != 0) {
        if (column_ != 0) lineLength_ = column_;
        column_ = 0;
        in = in.subspan(lineEnd);
        continue;
      }
    }
    if (in.empty()) break;
    const uint8_t character = in.front();
    in = in.subspan(1);
    if (IsSpace(character)) {
      column_ = 0;
    } else {
      ++column_;
      out += Put(character, out);
    }
  }
  return static_cast<size_t>(out - start);
}

size_t Base64Decoder::Put(uint8_t character, uint8_t* out) {
  if (character == '=') return Finish(out);
  group_[groupSize_++] = Base64Value(character);
  if (groupSize_ < group_.size()) return 0;
  const std::array<uint8_t, 3> bytes = Base64Bytes(group_);
  std::copy(bytes.begin(), bytes.end(), out);
  groupSize_ = 0;
  return bytes.size();
}

size_t Base64Decoder::Finish(uint8_t* out) {
  const size_t bytesHeld = groupSize_ < 2 ? 0 : groupSize_ - 1;
  std::fill(group_.begin() + static_cast<std::ptrdiff_t>(groupSize_), group_.end(), uint8_t{0});
  const std::array<uint8_t, 3> bytes = Base64Bytes(group_);
  std::copy_n(bytes.begin(), bytesHeld, out);
  groupSize_ = 0;
  return bytesHeld;
}

}  // namespace quillon
