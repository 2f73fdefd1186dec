#include <gtest/gtest.h>

#include "codec/EncodedWord.h"
#include "codec/TextReader.h"
#include "core/RecipientText.h"
#include "core/Text.h"
#include "platform/Platform.h"

namespace quillon {
namespace {

class EncodedWordTest : public ::testing::Test {
 protected:
  std::string Addresses(std::string_view value) { return DecodeAddresses(value, reader_); }

  std::unique_ptr<CodePage> ansi_ = MakeAnsiCodePage();
  std::unique_ptr<CharacterSets> sets_ = MakeCharacterSets();
  TextReader reader_{*ansi_, *sets_};
};

TEST_F(EncodedWordTest, WordsAsTheyAreReallyWritten) {
  const std::pair<std::string_view, std::string_view> kCases[] = {
      {"=?utf-8?Q?Gr=C3=BC=C3=9Fe_an?= Ann", "Grüße an Ann"},
      {"=?UTF-8*de?b?R3LDvMOfZQ==?=", "Grüße"},
      {"a =?utf-8?q?=C3=A9?=b", "a éb"},
      {"=?utf-8?q?a?= \t=?iso-8859-1?q?=E9?=  b", "aé  b"},
      {"=?utf-8?Q?=C3?= =?utf-8?Q?=A9?=", "é"},
      {"=?utf-8?B?ww==?==?UTF-8?Q?=A9?=", "é"},
      {"=?utf-8?Q?two words=20here?=", "two words here"},
      {"\"=?utf-8?Q?=C3=A9?=\"", "\"é\""},
      {"=?koi8-r?B?8NLJ18XU?=", "Привет"},
      {"=?iso-2022-jp?B?GyRCRnw=?= =?iso-2022-jp?B?S1wbKEI=?=", "日本"},
      {"=?utf-8?Q?M=FCller?=", "Müller"},
      {"raw \xC3\xA9 =?utf-8?q?=C3=A9?= \xE9", "raw é é é"},
      {"=?x-none?q?=E9?=", "é"},
      {"=?utf-8?q?a=0D=0A=00b?=", "a b"},
      {"=?utf-8?X?a?= =?utf-8?q?", "=?utf-8?X?a?= =?utf-8?q?"},
      {"=?ut f?q?a?= =? =?\?= =", "=?ut f?q?a?= =? =?\?= ="},
      {"=?utf-8?q?\?=a", "a"},
  };
  for (const auto& [value, expected] : kCases) {
    EXPECT_EQ(expected, DecodeEncodedWords(value, reader_)) << value;
  }
}

TEST_F(EncodedWordTest, ADecodedNameStaysOneRecipient) {
  const std::pair<std::string_view, std::string_view> kCases[] = {
      {"=?utf-8?q?Andr=C3=A9?= <a@x>, b@y", "André <a@x>|b@y"},
      {"=?utf-8?q?Doe=2C_Andr=C3=A9?= <a@x>, b@y", "\"Doe, André\" <a@x>|b@y"},
      {"\"=?utf-8?q?Doe=2C_Andr=C3=A9?=\" <a@x>,b@y", "\"Doe, André\" <a@x>|b@y"},
      {"=?utf-8?q?Ann_=22A=2C=22_B?= <a@x>, b@y", "\"Ann \\\"A,\\\" B\" <a@x>|b@y"},
      {"\"x =?utf-8?q?=22=2C=22?= y\" <a@x>, b@y", "\"x \\\",\\\" y\" <a@x>|b@y"},
      {"Ann=?utf-8?q?=3Ce=40z=3E=2C?= <a@x>, b@y", "Ann \"<e@z>,\" <a@x>|b@y"},
      {"<=?utf-8?q?=2C?=@x>, b@y", "<=?utf-8?q?=2C?=@x>|b@y"},
      {"a@x (=?utf-8?q?=C3=A9=2C?=), b@y", "a@x ( \"é,\")|b@y"},
      {"\"Doe, \xC3\xA9\" <a@x>, \"n\xC3\xA9\" <b@y>", "\"Doe, é\" <a@x>|\"né\" <b@y>"},
  };
  for (const auto& [value, expected] : kCases) {
    EXPECT_EQ(expected, Join(SplitRecipients(Addresses(value), ",", "<>"), "|")) << value;
  }
}

TEST_F(EncodedWordTest, HostileFieldsTakeLinearTime) {
  const auto repeated = [](std::string_view piece, std::string_view end) {
    std::string text;
    while (text.size() < 4'000'000) text += piece;
    return text + std::string(end);
  };
  EXPECT_EQ(std::string(250'000, 'a') + "   ",
            DecodeEncodedWords(repeated("=?utf-8?q?a?=   ", ""), reader_));
  for (const auto* const piece : {"=?a", "=?a?q?", "=?a?x?b", "<", "\"", " \"", "=?", "\"\\"}) {
    const auto field = repeated(piece, "?=");
    EXPECT_FALSE(Addresses(field).empty()) << piece;
    EXPECT_FALSE(DecodeEncodedWords(field, reader_).empty()) << piece;
  }
}

}  // namespace
}  // namespace quillon
