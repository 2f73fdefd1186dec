// Quoted-printable: the decoder of files against that of single lines, and text that was encoded
// the plainest way.
#include "codec/QuotedPrintable.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "MemoryFiles.h"
#include "codec/UUCode.h"

namespace {

using quillon::fuzz::Require;

std::string DecodeFile(std::string_view text) {
  quillon::fuzz::MemoryFiles files;
  files.files["in"].assign(text.begin(), text.end());
  quillon::ShortBool pending = quillon::kFalse;
  quillon::ShortBool result = quillon::kFalse;
  quillon::UUCode(files).QPDecodeFile("in", "out", pending, result);
  Require(result == quillon::kTrue);
  const auto& out = files.files["out"];
  return {out.begin(), out.end()};
}

std::string DecodeLines(std::string_view text) {
  quillon::fuzz::MemoryFiles files;
  quillon::UUCode codec(files);
  std::string all;
  bool breakPending = false;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    text.remove_prefix(line.size());
    text.remove_prefix(text.starts_with("\r\n") ? 2 : text.empty() ? 0 : 1);
    std::string decoded;
    quillon::ShortBool softBreak = quillon::kFalse;
    quillon::ShortBool result = quillon::kFalse;
    codec.QPDecodeString(line, decoded, softBreak, result);
    if (breakPending) all += "\r\n";
    all += decoded;
    breakPending = softBreak == quillon::kFalse;
  }
  return all;
}

std::string EncodeEveryByte(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789aBcDeF";
  std::string text;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    text += '=';
    text += kDigits[value >> 4];
    text += kDigits[value & 15];
    if (text.size() % 5 == 0) text += "= \r\n";
  }
  return text;
}

std::string DecodeLine(std::string_view line, bool& soft) {
  std::string out(line.size(), '\0');
  out.resize(quillon::DecodeQuotedPrintableLine(
      std::span(reinterpret_cast<const uint8_t*>(line.data()), line.size()),
      reinterpret_cast<uint8_t*>(out.data()), soft));
  return out;
}

// Decoding the start of a line up to its cut and then the rest must give what the whole line gives.
void CheckLine(std::string_view line, size_t at) {
  const auto bytes = std::span(reinterpret_cast<const uint8_t*>(line.data()), line.size());
  const size_t cut = quillon::QuotedPrintableCut(bytes.first(at));
  Require(cut <= at);
  bool soft = false;
  bool softRest = false;
  const std::string whole = DecodeLine(line, soft);
  std::string pieces(cut, '\0');
  auto* const out = reinterpret_cast<uint8_t*>(pieces.data());
  pieces.resize(quillon::DecodeQuotedPrintablePiece(bytes.first(cut), out));
  pieces += DecodeLine(line.substr(cut), softRest);
  Require(whole == pieces && soft == softRest);
}

// Every kernel must give what the lines give one by one. The last one is made visible, so that no
// line end is pending.
void CheckKernels(std::string text) {
  text += '.';
  const std::string expected = DecodeLines(text);
  for (const quillon::CodecKernel* const kernel : quillon::UsableKernels()) {
    std::string out(2 * text.size(), '\0');
    bool soft = true;
    out.resize(quillon::DecodeQuotedPrintableLines(
        std::span(reinterpret_cast<const uint8_t*>(text.data()), text.size()),
        reinterpret_cast<uint8_t*>(out.data()), soft, *kernel));
    Require(out == expected && !soft);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  Require(DecodeFile(text) == DecodeLines(text));
  Require(DecodeFile(EncodeEveryByte(text)) == text);
  const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
  CheckKernels(std::string(text));
  CheckLine(line, line.size() * data[0] / 255);
  return 0;
}
