#include <gtest/gtest.h>

#include "core/RecipientText.h"
#include "core/Text.h"

namespace quillon {
namespace {

TEST(RecipientText, DelimitersSplitOutsideBracketsAndQuotesOnly) {
  const struct {
    const char* text;
    const char* delimiter;
    const char* expected;
  } kCases[] = {
      {"a@x, b@y ,,  ", ",", "a@x|b@y"},
      {"  ", ",", ""},
      {"A <a@x,y>, b@z", ",", "A <a@x,y>|b@z"},
      {"\"Doe, John\" <j@d>, k@d", ",", "\"Doe, John\" <j@d>|k@d"},
      {"never <closed, b@y", ",", "never <closed|b@y"},
      {"5\" disk, b@y", ",", "5\" disk|b@y"},
      {"a,b;c", ";", "a,b|c"},
      {"O\"Brien,Smith\"son", ",", "O\"Brien|Smith\"son"},
      {"a@x,\"b,c\" <b@y>", ",", "a@x|\"b,c\" <b@y>"},
      {"John \"Doe, Jr\" <j@d>,k@d", ",", "John \"Doe, Jr\" <j@d>|k@d"},
      {"\"a \\\"b, c\\\" d\" <a@x>, k@d", ",", "\"a \\\"b, c\\\" d\" <a@x>|k@d"},
      {"\"C:\\\", k@d", ",", "\"C:\\\"|k@d"},
      {"\xC2\xA7 x\xC2\xA7y", "\xC2\xA7", "x|y"},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(test.expected, Join(SplitRecipients(test.text, test.delimiter, "<>"), "|"));
  }
}

TEST(RecipientText, ManyUnclosedGroupsTakeLinearTime) {
  const std::string hostile(2'000'000, '<');
  EXPECT_EQ(1U, SplitRecipients(hostile, ",", "<>").size());
}

}  // namespace
}  // namespace quillon
