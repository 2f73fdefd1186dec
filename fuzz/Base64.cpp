// Base64: every kernel against the scalar one, text in pieces against the whole, and the way there
// and back.
#include "codec/Base64.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "MemoryFiles.h"
#include "codec/UUCode.h"

namespace {

using Bytes = std::vector<uint8_t>;
using quillon::fuzz::Require;

Bytes Decode(std::span<const uint8_t> text, size_t cut, const quillon::CodecKernel& kernel) {
  quillon::Base64Decoder decoder(kernel);
  // Exactly as large as promised, so that a byte beyond is seen.
  Bytes head(quillon::Base64Decoder::Capacity(cut));
  Bytes tail(quillon::Base64Decoder::Capacity(text.size() - cut));
  head.resize(decoder.Decode(text.first(cut), head.data()));
  tail.resize(decoder.Decode(text.subspan(cut), tail.data()));
  uint8_t last[2] = {};
  const size_t rest = decoder.Finish(last);
  head.insert(head.end(), tail.begin(), tail.end());
  head.insert(head.end(), last, last + rest);
  return head;
}

void CheckDecoding(std::span<const uint8_t> text, size_t cut) {
  const Bytes expected = Decode(text, 0, quillon::kScalarKernel);
  for (const quillon::CodecKernel* const kernel : quillon::UsableKernels()) {
    Require(Decode(text, cut, *kernel) == expected);
  }
  quillon::fuzz::MemoryFiles files;
  files.files["in"].assign(text.begin(), text.end());
  quillon::ShortBool result = quillon::kFalse;
  quillon::UUCode(files).Base64DecodeFile("in", "out", result);
  Require(result == quillon::kTrue && files.files["out"] == expected);
}

void CheckEncoding(std::span<const uint8_t> bytes) {
  Bytes expected(quillon::Base64EncodedSize(bytes.size()));
  quillon::EncodeBase64Lines(bytes, expected.data(), quillon::kScalarKernel);
  for (const quillon::CodecKernel* const kernel : quillon::UsableKernels()) {
    Bytes encoded(expected.size());
    Require(quillon::EncodeBase64Lines(bytes, encoded.data(), *kernel) == encoded.size());
    Require(encoded == expected);
    const Bytes back = Decode(encoded, encoded.size() / 2, *kernel);
    Require(std::equal(back.begin(), back.end(), bytes.begin(), bytes.end()));
  }
}

// The same bytes as text that a decoder does not trip over at once.
Bytes ToAlphabet(std::span<const uint8_t> bytes) {
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  Bytes text;
  for (const uint8_t byte : bytes) {
    text.push_back(byte < 250 ? static_cast<uint8_t>(kAlphabet[byte % 64])
                              : static_cast<uint8_t>("\r\n\n =!"[byte - 250]));
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::span<const uint8_t> input(data + 1, size - 1);
  const size_t cut = input.size() * data[0] / 255;
  CheckDecoding(input, cut);
  CheckDecoding(ToAlphabet(input), cut);
  CheckEncoding(input);
  return 0;
}
