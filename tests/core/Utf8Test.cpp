#include <gtest/gtest.h>

#include "core/Text.h"
#include "core/Utf8.h"

namespace quillon {
namespace {

TEST(Utf8, EveryUnitSurvivesTheRoundTrip) {
  std::u16string all;
  for (char32_t unit = 0; unit < 0x10000; ++unit) {
    all += static_cast<char16_t>(unit);
    all += u' ';  // keeps surrogates from pairing
  }
  all += u"\xD83D\xDE00";  // a pair
  const auto text = Utf8FromUtf16(all);
  EXPECT_EQ(all, Utf16FromUtf8(text));
  EXPECT_EQ(all.size(), Utf16Length(text));
  EXPECT_TRUE(text.ends_with("\xF0\x9F\x98\x80"));
}

TEST(Utf8, MalformedBytesAreReplacedOneForOne) {
  const struct {
    std::string_view bytes;
    std::u16string_view expected;
  } kCases[] = {
      {"a\xFFz", u"a\xFFFDz"},         {"\xC0\x80", u"\xFFFD\xFFFD"},
      {"\xE2\x82", u"\xFFFD\xFFFD"},   {"\xF4\x90\x80\x80", u"\xFFFD\xFFFD\xFFFD\xFFFD"},
      {"\xC3(", u"\xFFFD("},           {"\xE0\x80\x80", u"\xFFFD\xFFFD\xFFFD"},
      {"\xE2\x82z", u"\xFFFD\xFFFDz"}, {"\x80z", u"\xFFFDz"},
  };
  for (const auto& test : kCases) EXPECT_EQ(test.expected, Utf16FromUtf8(test.bytes));
}

}  // namespace
}  // namespace quillon
