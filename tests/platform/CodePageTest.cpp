#include <gtest/gtest.h>
#include <string>

#include "platform/CodePage.h"
#include "platform/Utf8.h"

namespace quillon {
namespace {

TEST(CodePage, KeepsEveryByte) {
  const auto codePage = MakeAnsiCodePage();
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all.push_back(static_cast<char>(byte));
  EXPECT_EQ(codePage->ToBytes(codePage->ToText(all)), all);
}

TEST(CodePage, ReplacesWhatItDoesNotHold) {
  const auto codePage = MakeAnsiCodePage();
  EXPECT_EQ(codePage->ToText("\x80\xE9"), "\u20ac\u00e9");
  EXPECT_EQ(codePage->ToBytes("\u20ac \u00e9 \u4e2d \U0001F600").substr(0, 5), "\x80 \xE9 ?");
  EXPECT_EQ(codePage->ToBytes("a\xFFz").front(), 'a');
  EXPECT_EQ(codePage->ToBytes("a\xE2\x82").front(), 'a');
}

TEST(Utf8, MalformedSequencesBecomeOneReplacementAndTheRestSurvives) {
  const struct {
    const char* bytes;
    std::u32string characters;
  } kCases[] = {
      {"A\xC3\xA9z", U"A\u00e9z"},     {"\xF0\x9F\x98\x80", U"\U0001F600"},
      {"\xC0\x80", U"\uFFFD\uFFFD"},    // overlong, lead that cannot be
      {"\xE0\x80\x80", U"\uFFFD"},      // overlong
      {"\xED\xA0\x80", U"\uFFFD"},      // half of a surrogate pair
      {"\xF4\x90\x80\x80", U"\uFFFD"},  // beyond the last character
      {"\xE2\x82", U"\uFFFD"},          // cut off
      {"\xE2\x82z", U"\uFFFDz"},        // broken off
      {"\x80z", U"\uFFFDz"},            // no lead
  };
  for (const auto& test : kCases) {
    std::u32string characters;
    for (std::string_view rest = test.bytes; !rest.empty();) characters += TakeUtf8(rest);
    EXPECT_EQ(characters, test.characters) << test.bytes;
  }
}

}  // namespace
}  // namespace quillon
