#include <gtest/gtest.h>
#include <string>

#include "platform/Platform.h"
#include "ports/CodePage.h"

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
  // Never by what looks like it: these would separate and enclose addresses.
  EXPECT_EQ(codePage->ToBytes("\uff1c\uff1e\uff0c\uff02\uff20\u2329"), "??????");
  EXPECT_EQ(codePage->ToBytes("a\xFFz").front(), 'a');
  EXPECT_EQ(codePage->ToBytes("a\xE2\x82").front(), 'a');
}

}  // namespace
}  // namespace quillon
