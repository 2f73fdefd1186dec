#include <gtest/gtest.h>

#include "codec/FlowedText.h"

namespace quillon {
namespace {

TEST(FlowedText, LinesOfAParagraphBecomeOne) {
  const std::pair<const char*, const char*> kCases[] = {
      {"one \r\ntwo \r\nthree\r\nfour", "one two three\r\nfour"},
      {"one \ntwo\n", "one two\n"},
      {"one \r\n\r\ntwo", "one \r\ntwo"},
      {" From here \r\n >no quote\r\n  indented", "From here >no quote\r\n indented"},
      {"> one \r\n> two\r\n>> deeper \r\n> back\r\n>bare \r\n>bare",
       "> one two\r\n>> deeper \r\n> back\r\n>bare bare"},
      {"text \r\n-- \r\nsigned \r\nby", "text \r\n-- \r\nsigned by"},
      {"> text \r\n> -- \r\n> signed", "> text \r\n> -- \r\n> signed"},
      {"last \r\n", "last \r\n"},
      {"last ", "last "},
      {"", ""},
  };
  for (const auto& [text, expected] : kCases) EXPECT_EQ(expected, JoinFlowedText(text, false));
  EXPECT_EQ("日本語", JoinFlowedText("日本 \r\n語", true));
}

}  // namespace
}  // namespace quillon
