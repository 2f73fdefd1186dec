// Uuencode: every kernel against the scalar one, the file decoder against the decoder of single
// lines, and the way there and back, in one file and in parts.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "MemoryFiles.h"
#include "codec/UUCode.h"
#include "codec/UuLines.h"

namespace {

using Bytes = std::vector<uint8_t>;
using quillon::fuzz::MemoryFiles;
using quillon::fuzz::Require;

constexpr std::string_view kBegin = "begin 644 a\n";

std::string_view TextOf(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

void CheckKernels(std::span<const uint8_t> input) {
  Bytes expected(quillon::UuEncodedSize(input.size()));
  quillon::EncodeUuLines(input, expected.data(), quillon::kScalarKernel);
  Bytes expectedBack(input.size() / 4 * 3);
  const size_t taken =
      quillon::kScalarKernel.decodeUu(input.data(), input.size(), expectedBack.data());
  expectedBack.resize(taken / 4 * 3);
  for (const quillon::CodecKernel* const kernel : quillon::UsableKernels()) {
    Bytes encoded(expected.size());
    quillon::EncodeUuLines(input, encoded.data(), *kernel);
    Require(encoded == expected);
    Bytes back(input.size() / 4 * 3);
    Require(kernel->decodeUu(input.data(), input.size(), back.data()) == taken);
    back.resize(taken / 4 * 3);
    Require(back == expectedBack);
  }
}

// What the lines decode to one by one.
Bytes DecodeLines(quillon::UUCode& codec, std::string_view text) {
  Bytes decoded;
  quillon::ShortBool end = quillon::kFalse;
  while (end == quillon::kFalse && !text.empty()) {
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    quillon::ShortBool result = quillon::kFalse;
    codec.UUDecodeRec(line, decoded, end, result);
    Require(result == quillon::kTrue);
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
  return decoded;
}

void CheckDecoding(std::span<const uint8_t> input) {
  MemoryFiles files;
  quillon::UUCode codec(files);
  quillon::ShortBool result = quillon::kFalse;
  Bytes& text = files.files["in"];
  text.assign(input.begin(), input.end());
  codec.UUDecodeFile("in", "out", result);
  codec.UUDecodeFile2("in", "out", result);
  Require(result == quillon::kTrue);

  text.insert(text.begin(), kBegin.begin(), kBegin.end());
  codec.UUDecodeFile("in", "out", result);
  Require(result == quillon::kTrue);
  Require(files.files["out"] == DecodeLines(codec, TextOf(text).substr(kBegin.size())));

  const std::string parts[] = {"in", "in"};
  codec.UUDecodeFiles(parts, "joined", result);
  std::string mode;
  std::string name;
  codec.GetHeaderInfo("in", mode, name, result);
  codec.GetHeaderInfoFromStream(input, mode, name, result);
}

void CheckRoundTrip(std::span<const uint8_t> input, int partSize) {
  MemoryFiles files;
  quillon::UUCode codec(files);
  quillon::ShortBool result = quillon::kFalse;
  files.files["a"].assign(input.begin(), input.end());
  codec.UUEncodeFile("a", "b", quillon::UUCode::kGraveAccentStyle, result);
  codec.UUDecodeFile("b", "c", result);
  Require(result == quillon::kTrue && files.files["c"] == files.files["a"]);

  MemoryFiles parts;
  quillon::UUCode splitter(parts);
  parts.files["a"].assign(input.begin(), input.end());
  std::string directory = "/";
  splitter.UUEncodeFiles("a", directory, partSize, result);
  std::vector<std::string> paths;
  for (const auto& [path, content] : parts.files) {
    if (path != "a") paths.push_back(path);
  }
  std::reverse(paths.begin(), paths.end());
  splitter.UUDecodeFiles(paths, "c", result);
  Require(result == quillon::kTrue && parts.files["c"] == parts.files["a"]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::span<const uint8_t> input(data + 1, size - 1);
  CheckKernels(input);
  CheckDecoding(input);
  CheckRoundTrip(input, 63 + data[0] * 4);
  return 0;
}
