#include <gtest/gtest.h>
#include <string>

#include "codec/TextEncoder.h"
#include "platform/Platform.h"
#include "ports/CharacterEncoder.h"

namespace quillon {
namespace {

class TextEncoderTest : public ::testing::Test {
 protected:
  TextEncoder Encoder(std::string_view name, bool replaces = false) const {
    return {name, replaces, *system_};
  }

  std::unique_ptr<CharacterEncoder> system_ = MakeCharacterEncoder();
};

TEST_F(TextEncoderTest, WritesEachSetAsItsNameSays) {
  const struct {
    const char* set;
    const char* text;
    const char* bytes;
  } kCases[] = {
      {"UTF8", "ä€", "ä€"},
      {"auto", "ä€", "ä€"},
      {"Latin-1-is-unknown", nullptr, nullptr},
      {"ISO_8859-1", "äÿ\xC2\x85", "\xE4\xFF\x85"},
      {"iso-8859-2", "Łódź",
       "\xA3\xF3"
       "d\xBC"},
      {"iso-8859-15", "€", "\xA4"},
      {"windows-1252", "€", "\x80"},
      {"windows-1251", "Привет", "\xCF\xF0\xE8\xE2\xE5\xF2"},
      {"KOI8-R", "Привет", "\xF0\xD2\xC9\xD7\xC5\xD4"},
      {"iso-8859-7", "Γεια", "\xC3\xE5\xE9\xE1"},
      {"gb2312", "中a",
       "\xD6\xD0"
       "a"},
      {"big5", "中", "\xA4\xA4"},
      {"euc-kr", "한", "\xC7\xD1"},
      {"shift_jis", "日ｱ", "\x93\xFA\xB1"},
      {"euc-jp", "日aｱ本",
       "\xC6\xFC"
       "a\x8E\xB1\xCB\xDC"},
      {"iso-2022-jp", "a日本b", "a\x1B$BF|K\\\x1B(Bb"},
      {"iso-2022-jp", "滌漾", "\x1B$B^~_!\x1B(B"},
  };
  int compared = 0;
  for (const auto& test : kCases) {
    EXPECT_EQ(TextEncoder::Knows(test.set), test.text != nullptr) << test.set;
    if (test.text == nullptr || !Encoder(test.set).IsAvailable()) continue;
    EXPECT_EQ(Encoder(test.set).ToBytes(test.text).value_or("?"), test.bytes) << test.set;
    ++compared;
  }
  EXPECT_GE(compared, 8);  // Wine has not all of the tables
}

TEST_F(TextEncoderTest, NothingTakesThePlaceOfWhatASetLacks) {
  const struct {
    const char* set;
    const char* text;
    const char* lacking;
    const char* replaced;
  } kCases[] = {
      {"us-ascii", "ä\"ä", "U+00E4 (ä)", "?\"?"},
      {"iso-8859-1", "a€b", "U+20AC (€)", "a?b"},
      {"windows-1252", "＜Ａ", "U+FF1C (＜), U+FF21 (Ａ)", "??"},
      {"gb2312", "€", "U+20AC (€)", "?"},
      {"iso-2022-jp", "日ｱ①", "U+FF71 (ｱ), U+2460 (①)", "\x1B$BF|\x1B(B??"},
      {"iso-8859-1", "абвгде",
       "U+0430 (а), U+0431 (б), U+0432 (в), U+0433 (г), U+0434 (д) and others", "??????"},
      {"iso-8859-1", "\xED\xA0\x80", "U+FFFD (\xEF\xBF\xBD)", "?"},
  };
  for (const auto& test : kCases) {
    if (!Encoder(test.set).IsAvailable()) continue;
    EXPECT_EQ(Encoder(test.set).ToBytes(test.text), std::nullopt) << test.set;
    EXPECT_EQ(Encoder(test.set).Lacking(test.text), test.lacking);
    EXPECT_EQ(Encoder(test.set, true).ToBytes(test.text).value_or("none"), test.replaced);
  }
  EXPECT_EQ(Encoder("utf-8").ToBytes("\xED\xA0\x80x\xFF").value(), "\xEF\xBF\xBDx\xEF\xBF\xBD");
}

TEST_F(TextEncoderTest, AutoIsAsciiWhereThatHoldsEverything) {
  EXPECT_EQ(Encoder("AUTO").Label("plain"), "us-ascii");
  EXPECT_EQ(Encoder("auto").Label("ä"), "utf-8");
  EXPECT_EQ(Encoder("Utf-8").Label("plain"), "utf-8");
}

}  // namespace
}  // namespace quillon
