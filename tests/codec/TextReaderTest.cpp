#include <gtest/gtest.h>

#include "codec/CharacterSetName.h"
#include "codec/TextReader.h"
#include "platform/Platform.h"

namespace quillon {
namespace {

class TextReaderTest : public ::testing::Test {
 protected:
  std::unique_ptr<CodePage> ansi_ = MakeAnsiCodePage();
  std::unique_ptr<CharacterSets> sets_ = MakeCharacterSets();
  TextReader reader_{*ansi_, *sets_};
};

TEST(CharacterSetName, NamesComeInManyForms) {
  const std::pair<const char*, int> kCases[] = {
      {"UTF-8", 65001},
      {"utf8", 65001},
      {"iso-8859-1", 1252},
      {"ISO_8859-1:1987", 1252},
      {"iso8859-15", 28605},
      {"ISO-8859-9", 1254},
      {"8859_2", 28592},
      {"windows-1251", 1251},
      {"cp1251", 1251},
      {"x-cp1251", 1251},
      {"KOI8-R", 20866},
      {"gb2312", 936},
      {"ks_c_5601-1987", 949},
      {"x-sjis", 932},
      {"cp0", 0},
      {"iso-8859-17", 0},
      {"windows-1252x", 0},
      {"cp99999999999", 0},
      {"ibm037", 0},
      {"", 0},
  };
  for (const auto& [name, expected] : kCases) EXPECT_EQ(expected, CodePageOf(name)) << name;
}

TEST_F(TextReaderTest, ReadsTheSetsOfMail) {
  const struct {
    const char* name;
    std::string_view bytes;
    const char* text;
  } kCases[] = {
      {"utf-8", "\xE2\x82\xAC", "€"},
      {"iso-8859-1", "\xE9\x80", "é€"},
      {"iso-8859-2", "\xB3\xF3\xBC", "łóź"},
      {"iso-8859-5", "\xBF\xE0", "Пр"},
      {"iso-8859-7", "\xC1\xE2", "Αβ"},
      {"iso-8859-8-i", "\xF9\xEC", "של"},
      {"iso-8859-9", "\xFE\xFD", "şı"},
      {"iso-8859-15", "\xA4", "€"},
      {"windows-1250", "\x9C\x8A", "śŠ"},
      {"windows-1256", "\xE3\xD1", "مر"},
      {"windows-1258", "\xF4", "ô"},
      {"tis-620", "\xA1\xD2", "กา"},
      {"koi8-r", "\xF0\xD2", "Пр"},
      {"koi8-u", "\xA4\xA6", "єі"},
      {"gb2312", "\xC4\xE3\xBA\xC3", "你好"},
      {"gb18030", "\xC4\xE3\xBA\xC3", "你好"},
      {"big5", "\xA7\x41\xA6\x6E", "你好"},
      {"shift_jis", "\x93\xFA\x96\x7B\xB1", "日本ｱ"},
      {"iso-2022-jp", "a\x1B$BF|K\\\x1B(B b", "a日本 b"},
      {"iso-2022-jp", "\x1B$@F|K\\\n\x1B(I1", "日本\nｱ"},
      {"euc-jp", "a\xC6\xFC\xCB\xDC\x8E\xB1", "a日本ｱ"},
      {"euc-kr", "\xC7\xD1\xB1\xDB", "한글"},
      {"utf-7", "a+AOk-b", "aéb"},
      {"utf-16le", std::string_view("\xE9\0=\xD8\0\xDE", 6), "é😀"},
      {"utf-16", std::string_view("\0\xE9", 2), "é"},
      {"utf-16", std::string_view("\xFF\xFE\xE9\0", 4), "é"},
      {"", "\xC3\xA9", "é"},
      {"us-ascii", "\xC3\xA9", "é"},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(test.text, reader_.Named(test.bytes, test.name)) << test.name;
  }
}

TEST_F(TextReaderTest, WhatIsNotThatSetIsReadAsAnsi) {
  const std::pair<const char*, std::string_view> kCases[] = {
      {"", "\xE9"},
      {"us-ascii", "a\xE9"},
      {"utf-8", "\xE2\x82"},            // cut
      {"utf-8", "\xC0\xAF"},            // longer than need be
      {"utf-8", "\xED\xA0\x80"},        // half a pair
      {"utf-7", "caf\xE9"},             // eight bits
      {"utf-16le", "\x3D\xD8zz"},       // half a pair
      {"iso-2022-jp", "caf\xE9"},       // eight bits
      {"iso-2022-jp", "\x1B$BF"},       // cut
      {"iso-2022-jp", "\x1B$BF|\x1B"},  // cut
      {"iso-2022-jp", "\x1B$(DF|"},     // another set
      {"euc-jp", "\xC6"},               // cut
      {"euc-jp", "\xC6z"},              // half
      {"euc-jp", "\x8F\xB0\xA1\xA1"},   // JIS X 0212
      {"shift_jis", "\x93"},            // cut
      {"euc-kr", "\xC7"},               // cut
      {"big5", "\xA7\xFF"},             // no character
      {"x-unknown", "\xE9"},
  };
  for (const auto& [name, bytes] : kCases) {
    EXPECT_EQ(reader_.Ansi(bytes), reader_.Named(bytes, name)) << name;
  }
}

TEST_F(TextReaderTest, AMarkSaysMoreThanAName) {
  EXPECT_EQ("é", reader_.Whole("\xEF\xBB\xBF\xC3\xA9", "iso-8859-1"));
  EXPECT_EQ("é", reader_.Whole({"\xFE\xFF\0\xE9", 4}, "utf-8"));
  EXPECT_EQ("é", reader_.Whole({"\xFF\xFE\xE9\0", 4}, ""));
  // What only looks like one.
  EXPECT_EQ(reader_.Ansi("\xEF\xBB\xBF\xE9"), reader_.Whole("\xEF\xBB\xBF\xE9", ""));
}

}  // namespace
}  // namespace quillon
