#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "codec/Base64Word.h"

namespace quillon {
namespace {

using namespace std::string_view_literals;

// RFC 4648, 10, and every byte.
TEST(Base64Word, ThereAndBack) {
  const struct {
    std::string_view bytes;
    std::string_view word;
  } kCases[] = {{"", ""},
                {"f", "Zg=="},
                {"fo", "Zm8="},
                {"foo", "Zm9v"},
                {"foob", "Zm9vYg=="},
                {"fooba", "Zm9vYmE="},
                {"\0\xFF\xFE"sv, "AP/+"}};
  for (const auto& test : kCases) {
    EXPECT_EQ(test.word, Base64Word(test.bytes));
    EXPECT_EQ(test.bytes, BytesOfBase64Word(test.word));
  }
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  EXPECT_EQ(all, BytesOfBase64Word(Base64Word(all)));
}

TEST(Base64Word, TakesNothingElse) {
  for (const auto word :
       {"Zg="sv, "Zg"sv, "Z==="sv, "===="sv, "Zh=="sv, "Zm9="sv, "Zm=v"sv, "Zg==Zg=="sv,
        "Zm9v\r\n"sv, " Zm9v"sv, "Zm9-"sv, "Zm9\x05"sv, "Zm9\0"sv, "Zm9\xC8"sv}) {
    EXPECT_FALSE(BytesOfBase64Word(word)) << word;
  }
}

}  // namespace
}  // namespace quillon
