#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "codec/HeaderField.h"

namespace quillon {
namespace {

HeaderRecord RecordOf(const std::vector<std::string_view>& lines,
                      std::string_view dateFormat = "FIXED") {
  HeaderTable table(2);
  HeaderLineReader reader;
  for (const std::string_view line : lines) reader.Store(table, 1, line, dateFormat);
  EXPECT_TRUE(table[0].replyAddress.empty());
  return table[1];
}

TEST(HeaderFieldTest, FieldsAndTheirFolds) {
  const HeaderRecord record = RecordOf({
      "Date: Tue, 14 Nov 2026 22:03:59 +0000\r\n",
      "Subject: only the last",
      " line of a fold\r",
      "status:RO\n",
      "TO : a@x,",
      "   b@x,  ",
      "\tc@x",
      "Cc: d@x",
      "CONTENT-LENGTH:12",
      "Content-Transfer-Encoding:\tbase64",
      "Content-Type: multipart/mixed;",
      " boundary=\"a: b\"",
      "Message-Id: <1@x>",
      "X-UIDL: u1",
      "X-Mailer: M",
      "Disposition-Notification-To: me",
      "Unknown: field",
      " with a fold",
  });
  EXPECT_EQ(record.dateText, "Nov 14, 2026 22:03:59");
  EXPECT_EQ(record.subject, "line of a fold");
  EXPECT_EQ(record.status, "RO");
  EXPECT_EQ(record.to, "a@x,b@x,c@x");
  EXPECT_EQ(record.cc, "d@x");
  EXPECT_EQ(record.contentLength, "12");
  EXPECT_EQ(record.transferEncoding, "base64");
  EXPECT_EQ(record.contentType, "multipart/mixed;boundary=\"a: b\"");
  EXPECT_EQ(record.messageId, "<1@x>");
  EXPECT_EQ(record.uniqueId, "u1");
  EXPECT_EQ(record.mailer, "M");
  EXPECT_EQ(record.receiptRequested, kTrue);
  EXPECT_EQ(record.priority, 3);
  EXPECT_EQ(RecordOf({"To: a", "To: b"}).to, "b");
  EXPECT_EQ(RecordOf({"Subject: s", " \t"}).subject, "s");
}

TEST(HeaderFieldTest, LinesThatBelongToNothingAreSkipped) {
  const HeaderRecord record = RecordOf(
      {" first", "Subject: s", "no colon", " fold of it", "", " fold of nothing", ":", "To"});
  EXPECT_EQ(record.subject, "s");
  EXPECT_EQ(record.to, "");
}

TEST(HeaderFieldTest, TheOrderOfTheLinesDecidesTheReplyAddress) {
  const struct {
    std::vector<std::string_view> lines;
    std::string replyAddress;
  } cases[] = {
      {{"From: f", "Reply-To: r"}, "f"},
      {{"Reply-To: r", "From: f"}, "f"},
      {{"Reply-To: r", "Reply-To: s"}, "r"},
      {{"Reply-To: r", " s"}, "r"},
      {{"Reply-To:", " s"}, "s"},
      {{"From: f", "Return-Path: p"}, "p"},
      {{"Return-Path: p", "From: f", " g"}, "fg"},
      {{"From:   ", "Reply-To: r"}, "r"},
  };
  for (const auto& test : cases) EXPECT_EQ(RecordOf(test.lines).replyAddress, test.replyAddress);

  HeaderTable table(1);
  table[0].originator = "f";
  table[0].replyAddress = "x";
  StoreHeaderField(table, 0, " from ", "g", kTrue);
  EXPECT_EQ(table[0].replyAddress, "fg");
  StoreHeaderField(table, 1, "FROM", "beyond the table", kFalse);
}

TEST(HeaderFieldTest, Priority) {
  const std::vector<std::pair<std::string, int>> cases = {
      {"1", 1},
      {"2 (High)", 2},
      {"3", 3},
      {"4", 4},
      {"5x", 5},
      {"9", 5},
      {"0", 1},
      {"High", 1},
      {"-2", 1},
      {"2.9", 2},
      {"1e1", 5},
      {"inf", 1},
      {"99999999999999999999", 5},
      {"", 3},
      {"   ", 3},
      {std::string(400, '9'), 3},
  };
  for (const auto& [text, priority] : cases) {
    const std::string line = "X-Priority: " + text;
    EXPECT_EQ(RecordOf({line}).priority, priority) << text;
  }
}

TEST(HeaderFieldTest, AFoldOf200000LinesTakesNoTimeToSpeakOf) {
  const std::string line = "\t\"A Person of Some Importance\" <someone@example.org>,";
  for (const std::string_view name : {"To:", "From:", "Reply-To:", "Return-Path:"}) {
    HeaderTable table(1);
    HeaderLineReader reader;
    reader.Store(table, 0, name, "");
    for (int i = 0; i < 200000; ++i) reader.Store(table, 0, line, "");
    EXPECT_EQ(table[0].to.size() + table[0].originator.size(),
              name == "To:" || name == "From:" ? 200000 * (line.size() - 1) : 0);
  }
}

TEST(HeaderFieldTest, StripLineEnd) {
  const std::vector<std::pair<std::string_view, std::string_view>> cases = {
      {"a\r\n", "a"}, {"a\n", "a"},     {"a\r", "a"}, {"a\n\r", "a\n"}, {"a\r\n\r\n", "a\r\n"},
      {"a", "a"},     {"a\n\n", "a\n"}, {"", ""},     {"\r\n", ""},
  };
  for (const auto& [text, stripped] : cases) EXPECT_EQ(StripLineEnd(text), stripped);
}

}  // namespace
}  // namespace quillon
