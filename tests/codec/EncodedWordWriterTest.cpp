// What header fields are written with, and that our own readers give back what was written.
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>

#include "codec/ContentField.h"
#include "codec/EncodedWord.h"
#include "codec/EncodedWordWriter.h"
#include "codec/FieldFold.h"
#include "codec/Parameter2231.h"
#include "codec/TextEncoder.h"
#include "codec/TextReader.h"
#include "core/Text.h"
#include "core/Utf8.h"
#include "platform/Platform.h"
#include "ports/CharacterEncoder.h"
#include "ports/CharacterSets.h"
#include "ports/CodePage.h"

namespace quillon {
namespace {

std::string Same(std::string_view text) {
  return std::string(text);
}

struct OwnReader {
  std::unique_ptr<CodePage> ansi = MakeAnsiCodePage();
  std::unique_ptr<CharacterSets> sets = MakeCharacterSets();
  TextReader reader{*ansi, *sets};
};

std::string WordsRead(std::string_view words) {
  return DecodeEncodedWords(words, OwnReader().reader);
}

std::string Repeated(std::string_view text, int times) {
  std::string all;
  while (times-- > 0) all += text;
  return all;
}

TEST(EncodedWordWriter, TakesTheShorterForm) {
  EXPECT_EQ(EncodeWords("Grüße an alle die hier lesen", "utf-8", Same),
            "=?utf-8?Q?Gr=C3=BC=C3=9Fe_an_alle_die_hier_lesen?=");
  EXPECT_EQ(EncodeWords("Привет", "utf-8", Same), "=?utf-8?B?0J/RgNC40LLQtdGC?=");
  EXPECT_EQ(EncodeWords("a plain =?b", "us-ascii", Same), "=?us-ascii?Q?a_plain_=3D=3Fb?=");
}

TEST(EncodedWordWriter, NoWordIsTooLongOrCutInACharacter) {
  const std::string kTexts[] = {
      Repeated("ä", 500),     Repeated("日本語のとても長い件名", 40),
      Repeated("😀x", 100),    Repeated("long ä ", 80),
      std::string(3000, 'x'), "a  b\t c ä  ",
  };
  for (const auto& text : kTexts) {
    for (const std::size_t used : {1U, 9U, 50U, 74U, 500U}) {
      const auto words = EncodeWords(text, "utf-8", Same, used);
      auto room = used + 35 <= kFieldColumns ? kFieldColumns - used : 75;
      for (const auto& word : Split(words, " ")) {
        EXPECT_LE(word.size(), std::min<std::size_t>(room, 75)) << word;
        EXPECT_TRUE(IsUtf8(WordsRead(word))) << word;
        room = 75;
      }
      EXPECT_EQ(WordsRead(words), text);
    }
  }
}

TEST(EncodedWordWriter, EachWordOfASetWithShiftsEndsInAscii) {
  const auto system = MakeCharacterEncoder();
  const TextEncoder encoder("ISO-2022-JP", false, *system);
  if (!encoder.IsAvailable()) GTEST_SKIP() << "The system has no table of it.";
  const auto text = Repeated("日本語a", 30);
  const auto words = EncodeWords(
      text, "iso-2022-jp", [&](std::string_view part) { return encoder.ToBytes(part).value(); });
  for (const auto& word : Split(words, " ")) {
    EXPECT_LE(word.size(), 75U);
    // Read as what needs no reading.
    auto renamed = word;
    const auto bytes =
        WordsRead(renamed.replace(2, std::string_view("iso-2022-jp").size(), "us-ascii"));
    EXPECT_GT(bytes.rfind("\x1B(B") + 1, bytes.rfind("\x1B$B")) << word;
  }
  EXPECT_EQ(WordsRead(words), text);
}

TEST(EncodedWordWriter, KnowsWhatCannotStandAsItIs) {
  for (const auto* const text : {"ä", "a\x01", "a =?b", "\x7F"}) {
    EXPECT_TRUE(NeedsEncodedWords(text)) << text;
  }
  EXPECT_TRUE(NeedsEncodedWords(std::string(901, 'x')));
  EXPECT_FALSE(NeedsEncodedWords(Repeated("a word? = \t", 200)));
}

TEST(FieldFold, BreaksAtBlanksAndAddsNothing) {
  const auto word = std::string(70, 'w');
  const auto longWord = std::string(200, 'l');
  const struct {
    std::string field;
    std::string lines;
  } kCases[] = {
      {"A: b", "A: b\r\n"},
      {"A: " + word + " " + word, "A: " + word + "\r\n " + word + "\r\n"},
      {"A: " + word + "  \t" + word, "A: " + word + "\r\n  \t" + word + "\r\n"},
      {"A: " + longWord, "A: " + longWord + "\r\n"},
      {"A: " + longWord + " b c", "A: " + longWord + "\r\n b c\r\n"},
      {"A: b " + longWord, "A: b\r\n " + longWord + "\r\n"},
      {"A: " + word + std::string(200, ' '), "A: " + word + std::string(200, ' ') + "\r\n"},
      {"A:" + std::string(200, ' ') + "b", "A:" + std::string(200, ' ') + "b\r\n"},
      {"", "\r\n"},
  };
  for (const auto& test : kCases) EXPECT_EQ(FoldField(test.field), test.lines);
  for (const auto& line : Split(FoldField("To: " + Repeated("ann@example.org, ", 300)), "\r\n")) {
    EXPECT_LE(line.size(), kFieldColumns);
  }
}

TEST(Parameter2231, ValuesOfEveryKindAreReadBack) {
  const OwnReader own;
  const std::string kValues[] = {
      "Übersicht.pdf",
      Repeated("長い名前 ", 30) + ".txt",
      "100% 'quoted' \"ä\".txt",
      Repeated("ä;=*", 50) + ".x",
      "😀",
  };
  for (const auto& value : kValues) {
    const auto extended = ExtendedParameter("filename", value, "utf-8");
    EXPECT_EQ(ParseContentField("attachment" + extended, own.reader).Parameter("FILENAME"), value);
    const auto old = OldParameter("name", value, "utf-8", Same);
    EXPECT_EQ(ParseContentField("text/plain" + old, own.reader).Parameter("NAME"), value);
    for (const auto& lines : {extended, old}) {
      for (const auto& line : Split(lines, "\r\n")) EXPECT_LE(line.size(), 78U) << line;
    }
  }
  EXPECT_EQ(ParseContentField("a; name=" + QuotedValue("a\\\"b"), own.reader).Parameter("NAME"),
            "a\\\"b");
}

}  // namespace
}  // namespace quillon
