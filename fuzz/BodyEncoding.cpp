// A text that is encoded for its way is decoded as it was, and its lines are what every server
// takes.
#include "codec/BodyEncoding.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "MemoryFiles.h"
#include "codec/Base64.h"
#include "codec/QuotedPrintable.h"
#include "core/Text.h"

namespace {

using quillon::fuzz::Require;

std::span<const uint8_t> BytesIn(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

std::string WithLineEnds(std::string_view text) {
  std::string lines;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\r' && text[at] != '\n') {
      lines += text[at];
      continue;
    }
    lines += "\r\n";
    if (text.substr(at).starts_with("\r\n")) ++at;
  }
  return lines;
}

std::string Decoded(const quillon::EncodedBody& body) {
  std::string out(body.text.size() * 2 + 5, '\0');
  auto* const bytes = reinterpret_cast<uint8_t*>(out.data());
  if (body.encoding == "base64") {
    quillon::Base64Decoder decoder;
    auto size = decoder.Decode(BytesIn(body.text), bytes);
    size += decoder.Finish(bytes + size);
    return out.substr(0, size);
  }
  bool soft = false;
  const auto size = quillon::DecodeQuotedPrintableLines(BytesIn(body.text + "."), bytes, soft);
  return out.substr(0, size - 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto body = quillon::EncodeBody(text);
  for (const auto& line : quillon::Split(WithLineEnds(body.text), "\r\n")) {
    Require(line.size() <= (body.encoding == "7bit" ? 998 : 76) && line != ".");
    for (const char c : line) Require(c > 0);
  }
  if (body.encoding == "7bit") {
    Require(body.text == text);
  } else {
    Require(Decoded(body) == WithLineEnds(text));
  }
  Require(Decoded({"quoted-printable", quillon::EncodeQuotedPrintable(text)}) ==
          WithLineEnds(text));
  return 0;
}
