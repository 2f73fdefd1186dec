// Every kernel that this processor can run must do what the scalar one does, down to the byte where
// it stops.
#include <array>
#include <cstddef>
#include <gtest/gtest.h>
#include <random>
#include <string_view>
#include <utility>
#include <vector>

#include "codec/kernels/CodecKernel.h"

namespace quillon {
namespace {

using Bytes = std::vector<uint8_t>;

// The characters consumed and the bytes made of them.
std::pair<size_t, Bytes> Decoded(DecodeGroups decode, const Bytes& text) {
  Bytes out(text.size() / 4 * 3);
  const size_t taken = decode(text.data(), text.size(), out.data());
  out.resize(taken / 4 * 3);
  return {taken, out};
}

Bytes Encoded(EncodeGroups encode, const Bytes& bytes) {
  Bytes out(bytes.size() / 3 * 4);
  encode(bytes.data(), bytes.size(), out.data());
  return out;
}

class CodecKernelTest : public ::testing::TestWithParam<const CodecKernel*> {
 protected:
  void CheckDecoding(const Bytes& base64, const Bytes& uu) {
    ASSERT_EQ(Decoded(GetParam()->decodeBase64, base64),
              Decoded(kScalarKernel.decodeBase64, base64));
    ASSERT_EQ(Decoded(GetParam()->decodeUu, uu), Decoded(kScalarKernel.decodeUu, uu));
  }
};

TEST_P(CodecKernelTest, EveryLength) {
  std::mt19937 random(1);
  for (size_t groups = 0; groups < 60; ++groups) {
    Bytes bytes(groups * 3);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    Bytes base64 = Encoded(kScalarKernel.encodeBase64, bytes);
    Bytes uu = Encoded(kScalarKernel.encodeUu, bytes);
    ASSERT_EQ(Encoded(GetParam()->encodeBase64, bytes), base64);
    ASSERT_EQ(Encoded(GetParam()->encodeUu, bytes), uu);
    ASSERT_EQ(Decoded(GetParam()->decodeBase64, base64).second, bytes);
    ASSERT_EQ(Decoded(GetParam()->decodeUu, uu).second, bytes);
    // Lengths that are no multiple of 4.
    base64.resize(base64.size() + groups % 4, 'A');
    uu.resize(uu.size() + groups % 4, ' ');
    CheckDecoding(base64, uu);
  }
}

TEST_P(CodecKernelTest, EveryGroup) {
  Bytes all;
  for (unsigned value = 0; value < 4096; ++value) {
    const unsigned other = 4095 - value;
    all.push_back(static_cast<uint8_t>(value >> 4));
    all.push_back(static_cast<uint8_t>(value << 4 | other >> 8));
    all.push_back(static_cast<uint8_t>(other));
  }
  ASSERT_EQ(Encoded(GetParam()->encodeBase64, all), Encoded(kScalarKernel.encodeBase64, all));
  ASSERT_EQ(Encoded(GetParam()->encodeUu, all), Encoded(kScalarKernel.encodeUu, all));
  ASSERT_EQ(Decoded(GetParam()->decodeBase64, Encoded(kScalarKernel.encodeBase64, all)).second,
            all);
  ASSERT_EQ(Decoded(GetParam()->decodeUu, Encoded(kScalarKernel.encodeUu, all)).second, all);
}

TEST_P(CodecKernelTest, EveryByteAtEveryPlace) {
  for (size_t place = 0; place < 100; ++place) {
    for (unsigned byte = 0; byte < 256; ++byte) {
      Bytes text(100, 'S');
      text[place] = static_cast<uint8_t>(byte);
      CheckDecoding(text, text);
    }
  }
}

TEST_P(CodecKernelTest, Base64Lines) {
  Bytes bytes(3 * kBase64LineBytes);
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * i);
  Bytes expected(3 * kBase64LineSize);
  Bytes text(expected.size());
  kScalarKernel.encodeBase64Lines(bytes.data(), 3, expected.data());
  GetParam()->encodeBase64Lines(bytes.data(), 3, text.data());
  ASSERT_EQ(text, expected);
  Bytes out(bytes.size());
  ASSERT_EQ(GetParam()->decodeBase64Lines(text.data(), 3, out.data()), 3U);
  ASSERT_EQ(out, bytes);
  for (size_t place = 0; place < text.size(); ++place) {
    Bytes damaged = text;
    damaged[place] = '!';
    ASSERT_EQ(GetParam()->decodeBase64Lines(damaged.data(), 3, out.data()),
              place / kBase64LineSize);
  }
}

Bytes DecodedQuotedPrintable(const CodecKernel& kernel, const Bytes& text) {
  Bytes out(2 * text.size());
  out.resize(kernel.decodeQuotedPrintable(text.data(), text.size(), out.data()));
  return out;
}

// What has a meaning stands at every place of the blocks, and across two of them.
TEST_P(CodecKernelTest, QuotedPrintableAtEveryPlace) {
  struct Case {
    std::string_view text;
    std::string_view decoded;
  };
  constexpr std::array<Case, 10> kCases = {{{"=41=42", "AB"},
                                            {"=4g=", "=4g="},
                                            {"=\r\n=43", "C"},
                                            {"= \t\n", ""},
                                            {"=20\r\n", " \r\n"},
                                            {"x \t\r\n", "x\r\n"},
                                            {"x\r\n\r\n", "x\r\n\r\n"},
                                            {"\n\r\n\r\r", "\r\n\r\n\r\n\r\n"},
                                            {"=\n\n", "\r\n"},
                                            {"==3D=\r", "=="}}};
  for (const Case& one : kCases) {
    for (size_t place = 0; place < 200; ++place) {
      Bytes text(200, 'z');
      Bytes expected = text;
      const auto at = static_cast<std::ptrdiff_t>(place);
      text.insert(text.begin() + at, one.text.begin(), one.text.end());
      expected.insert(expected.begin() + at, one.decoded.begin(), one.decoded.end());
      ASSERT_EQ(DecodedQuotedPrintable(*GetParam(), text), expected) << one.text << place;
    }
  }
}

TEST_P(CodecKernelTest, QuotedPrintableOfAnyKind) {
  constexpr std::string_view kCharacters = "====\r\r\n\n  \t34Aax";
  std::mt19937 random(1);
  for (size_t length = 0; length < 600; ++length) {
    Bytes text(length);
    for (uint8_t& byte : text) {
      // Dense in every second text, else mostly plain.
      const size_t kind = random() % (length % 2 == 0 ? 17 : 170);
      byte = static_cast<uint8_t>(kind < kCharacters.size() ? kCharacters[kind] : 'z');
    }
    ASSERT_EQ(DecodedQuotedPrintable(*GetParam(), text),
              DecodedQuotedPrintable(kScalarKernel, text));
  }
}

INSTANTIATE_TEST_SUITE_P(Usable, CodecKernelTest, ::testing::ValuesIn(UsableKernels()),
                         [](const ::testing::TestParamInfo<const CodecKernel*>& kernel) {
                           return kernel.param->name;
                         });

}  // namespace
}  // namespace quillon
