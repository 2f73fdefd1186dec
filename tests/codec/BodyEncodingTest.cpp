#include <gtest/gtest.h>
#include <span>
#include <string>
#include <vector>

#include "codec/Base64.h"
#include "codec/BodyEncoding.h"
#include "codec/QuotedPrintable.h"
#include "core/Text.h"

namespace quillon {
namespace {

std::string BodyRead(const EncodedBody& body) {
  const auto bytes =
      std::span(reinterpret_cast<const uint8_t*>(body.text.data()), body.text.size());
  std::vector<uint8_t> out(body.text.size() * 2 + 3);
  std::size_t size = 0;
  if (body.encoding == "base64") {
    Base64Decoder decoder;
    size = decoder.Decode(bytes, out.data());
    size += decoder.Finish(out.data() + size);
  } else if (body.encoding == "quoted-printable") {
    // Closed with a mark that is taken off again, so that a line end at the end counts.
    auto marked = body.text + ".";
    bool soft = false;
    size = DecodeQuotedPrintableLines(
        std::span(reinterpret_cast<const uint8_t*>(marked.data()), marked.size()), out.data(),
        soft);
    --size;
  } else {
    return body.text;
  }
  return {out.begin(), out.begin() + static_cast<std::ptrdiff_t>(size)};
}

TEST(BodyEncoding, IsTheShortestThatCarriesTheTextUnchanged) {
  const std::string longLine(1200, 'x');
  const struct {
    std::string text;
    const char* encoding;
    std::string read;  // with all line ends CR LF
  } kCases[] = {
      {"", "7bit", ""},
      {"a\r\nb\n.c\r" + std::string(998, 'x'), "7bit", "a\r\nb\n.c\r" + std::string(998, 'x')},
      {longLine, "quoted-printable", longLine},
      {std::string("a\0b", 3), "quoted-printable", std::string("a\0b", 3)},
      {"a\n.\nb", "quoted-printable", "a\r\n.\r\nb"},
      {".\r\n", "quoted-printable", ".\r\n"},
      {"Gr\xC3\xBC\xC3\x9F"
       "e an alle Freunde \r\n\t\r\n=20\r\n",
       "quoted-printable",
       "Gr\xC3\xBC\xC3\x9F"
       "e an alle Freunde \r\n\t\r\n=20\r\n"},
      {"\xE4\n\n\r\r\n", "quoted-printable", "\xE4\r\n\r\n\r\n\r\n"},
      {"\xD0\x9F\xD1\x80\xD0\xB8\n\xD0\xB2\xD0\xB5\xD1\x82", "base64",
       "\xD0\x9F\xD1\x80\xD0\xB8\r\n\xD0\xB2\xD0\xB5\xD1\x82"},
  };
  for (const auto& test : kCases) {
    const auto body = EncodeBody(test.text);
    EXPECT_EQ(body.encoding, test.encoding) << test.text;
    EXPECT_EQ(BodyRead(body), test.read);
  }
}

TEST(BodyEncoding, LinesOfQuotedPrintableAreShortAndHarmless) {
  std::string text;
  for (std::size_t length = 60; length < 90; ++length) {
    text += std::string(length, '.') + "\n" + std::string(length, ' ') + "\n" +
            std::string(length - 2, 'x') + "\xE4\n" + std::string(length, 'y') + " \nFrom me\n";
  }
  const auto encoded = EncodeQuotedPrintable(text);
  for (const auto& line : Split(encoded, "\r\n")) {
    EXPECT_LE(line.size(), 76U);
    EXPECT_FALSE(line.starts_with(".") || line.starts_with("From ")) << line;
    EXPECT_FALSE(line.ends_with(" ")) << line;
  }
  std::string read = text;
  for (auto at = read.find('\n'); at != std::string::npos; at = read.find('\n', at + 2)) {
    read.insert(at, 1, '\r');
  }
  EXPECT_EQ(BodyRead({"quoted-printable", encoded}), read);
}

}  // namespace
}  // namespace quillon
