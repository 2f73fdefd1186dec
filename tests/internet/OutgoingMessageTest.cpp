#include <gtest/gtest.h>

#include "internet/Address.h"
#include "internet/BodyText.h"
#include "internet/OutgoingMessage.h"
#include "mail/InstanceState.h"
#include "platform/Platform.h"

namespace quillon {
namespace {

const LocalTime kNow{2026, 11, 1, 0, 8, 5, 9, -210};

OutgoingMessage Minimal() {
  OutgoingMessage message;
  message.from = "Joe <joe@example.org>";
  message.whoTo = {"ann@example.org"};
  message.subject = "Hello";
  message.charset = "us-ascii";
  message.utcOffset = kUtcOffsetNotSet;
  message.version = "1.0";
  return message;
}

TEST(HeaderBlock, IsInItsOrderWithEverythingSet) {
  auto message = Minimal();
  message.whoTo = {"Ann <ann@example.org>", " bob@example.org "};
  message.cc = {"cid@example.org"};
  message.bcc = {"dan@example.org"};
  message.replyTo = "back@example.org";
  message.certify = true;
  message.importance = 1;
  message.utcOffset = 5.75F;
  message.xMailer = "Quillon v1.0";
  message.specialBuild = "internal";
  message.xHeaders = {{" Loop ", "no"}, {"Two", "b"}};
  EXPECT_EQ(BuildHeaderBlock(message, kNow),
            "Date:  Sun, 01 Nov 26 08:05:09 +0545\r\n"
            "From: Joe <joe@example.org>\r\n"
            "To: Ann <ann@example.org>, bob@example.org\r\n"
            "Cc: cid@example.org\r\n"
            "Subject: Hello\r\n"
            "MIME-version: 1.0\r\n"
            "Content-Type: text/plain; charset=\"us-ascii\"\r\n"
            "Return-Receipt-To: back@example.org\r\n"
            "Disposition-Notification-To: back@example.org\r\n"
            "Reply-To: back@example.org\r\n"
            "X-Priority: 1\r\n"
            "X-MSMail-Priority: High\r\n"
            "X-Loop: no\r\n"
            "X-Two: b\r\n"
            "X-Interface: Quillon OLE Server v1.0 (32)\r\n"
            "X-Mailer: Quillon v1.0\r\n"
            "X-SpecialBuild: internal\r\n"
            "\r\n");
}

TEST(HeaderBlock, LeavesOutWhatIsNotSet) {
  auto message = Minimal();
  message.importance = 3;
  message.certify = true;
  EXPECT_EQ(BuildHeaderBlock(message, kNow),
            "Date:  Sun, 01 Nov 26 08:05:09 -0330\r\n"
            "From: Joe <joe@example.org>\r\n"
            "To: ann@example.org\r\n"
            "Subject: Hello\r\n"
            "MIME-version: 1.0\r\n"
            "Content-Type: text/plain; charset=\"us-ascii\"\r\n"
            "Return-Receipt-To: joe@example.org\r\n"
            "Disposition-Notification-To: joe@example.org\r\n"
            "Reply-To: <joe@example.org>\r\n"
            "X-MSMail-Priority: Normal\r\n"
            "X-Interface: Quillon OLE Server v1.0 (32)\r\n"
            "\r\n");
}

TEST(HeaderBlock, NoValueCanStartAnotherField) {
  const std::string evil("a\r\n\r\n\0Evil: yes\n", 16);
  auto message = Minimal();
  message.from = message.subject = message.replyTo = message.charset = message.xMailer = evil;
  message.whoTo = message.cc = {evil};
  message.certify = true;
  message.xHeaders = {{evil, evil}};
  const auto block = BuildHeaderBlock(message, kNow);
  EXPECT_EQ(block.find("\nEvil"), std::string::npos);
  EXPECT_EQ(block.find('\0'), std::string::npos);
  EXPECT_EQ(block.find("\r\n\r\n"), block.size() - 4);
  EXPECT_NE(block.find("Subject: a Evil: yes \r\n"), std::string::npos);
}

TEST(HeaderBlock, FoldsLongRecipientListsOnly) {
  auto message = Minimal();
  message.whoTo.assign(200, "somebody@example.org");
  const auto block = BuildHeaderBlock(message, kNow);
  std::size_t longest = 0;
  std::size_t folds = 0;
  for (std::size_t start = 0; start < block.size();) {
    const auto end = block.find("\r\n", start);
    longest = std::max(longest, end - start);
    if (block[start] == ' ') ++folds;
    start = end + 2;
  }
  EXPECT_LE(longest, 998U);
  EXPECT_EQ(folds, 4U);
}

TEST(HeaderBlock, TheModernFormIsThatOfTheStandard) {
  auto message = Minimal();
  message.modern = true;
  message.uniqueId = "0f1e";
  message.whoTo = {" "};
  message.cc = {"cid@example.org"};
  message.transferEncoding = "7bit";
  message.headers = {{"References", "<1@example.org> <2@example.org>"}};
  EXPECT_EQ(BuildHeaderBlock(message, kNow),
            "Date: Sun, 01 Nov 2026 08:05:09 -0330\r\n"
            "Message-ID: <0f1e@example.org>\r\n"
            "From: Joe <joe@example.org>\r\n"
            "Cc: cid@example.org\r\n"
            "Subject: Hello\r\n"
            "MIME-Version: 1.0\r\n"
            "Content-Type: text/plain; charset=\"us-ascii\"\r\n"
            "Content-Transfer-Encoding: 7bit\r\n"
            "Reply-To: <joe@example.org>\r\n"
            "X-MSMail-Priority: Normal\r\n"
            "References: <1@example.org> <2@example.org>\r\n"
            "\r\n");
  message.headers = {{"message-id", "<mine@example.org>"}};
  const auto block = BuildHeaderBlock(message, kNow);
  EXPECT_EQ(block.find("Message-ID"), std::string::npos);
  EXPECT_NE(block.find("message-id: <mine@example.org>\r\n"), std::string::npos);
}

TEST(HeaderBlock, InACharacterSetNoValueCanStartAnotherField) {
  const auto system = MakeCharacterEncoder();
  const std::string evil("ä\r\n\r\n\0Evil: yes\n", 17);
  auto message = Minimal();
  message.encoder.emplace("utf-8", false, *system);
  message.modern = true;
  message.from = message.subject = message.replyTo = message.xMailer = evil;
  message.whoTo = message.cc = {evil, evil + " <a@b>", "\"" + evil + "\" <a@b\r\nEvil: c>"};
  message.certify = true;
  message.xHeaders = message.headers = {{evil, evil}};
  const auto block = BuildHeaderBlock(message, kNow);
  EXPECT_EQ(block.find("\nEvil"), std::string::npos);
  EXPECT_EQ(block.find("\r\n\r\n"), block.size() - 4);
}

TEST(BodyText, KeepsItsRulesHoweverItIsCutIntoBlocks) {
  const struct {
    std::string text;
    std::string wire;
  } kCases[] = {
      {"", ""},
      {"a\nb\rc\r\nd", "a\r\nb\r\nc\r\nd"},
      {"\n\r\r\n", "\r\n\r\n\r\n"},
      {".", ". "},
      {".\n", " .\r\n"},
      {".\r\n.\r\n.", " .\r\n. \r\n. "},
      {"a\r\n.\r\n..\r\n.b", "a\r\n. \r\n...\r\n..b"},
      {"..\n", "...\r\n"},
      {"a.\n b.", "a.\r\n b."},
      {std::string(100'000, 'x') + "\n.", std::string(100'000, 'x') + "\r\n. "},
  };
  for (const auto& test : kCases) {
    for (const std::size_t wanted : {1U, 2U, 3U, 1U << 16U}) {
      BodyText text(test.text);
      std::string wire;
      while (text.Fill(wire, wanted) == DataSource::State::More) {
      }
      EXPECT_EQ(wire, test.wire) << wanted;
    }
  }
}

TEST(Address, ACommaInANameDoesNotSeparate) {
  const struct {
    const char* recipient;
    std::vector<std::string> envelope;
    const char* header;
  } kCases[] = {
      {"Doe, John <john@x>", {"john@x"}, "\"Doe, John\" <john@x>"},
      {"O\"Brien, Pat <pat@x>", {"pat@x"}, "\"O\\\"Brien, Pat\" <pat@x>"},
      {"ann@x, Doe, John <john@x>,bob",
       {"ann@x", "john@x", "bob"},
       "ann@x, \"Doe, John\" <john@x>, bob"},
      {"joe, ann", {"joe", "ann"}, "joe, ann"},
      {"joe, <ann@x>", {"joe", "ann@x"}, "joe, <ann@x>"},
      {"\"Doe, John\" <john@x>", {"john@x"}, "\"Doe, John\" <john@x>"},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(FormatSMTPRecipients({test.recipient}, {}, {}), test.envelope) << test.recipient;
    EXPECT_EQ(FormatRecipientText({test.recipient}, 4), test.header);
  }
}

TEST(Address, TheEnvelopeTakesBareAddresses) {
  EXPECT_EQ(FormatSMTPRecipients({"Ann <ann@x.org>, bob@x.org", "\"Lee, <B>\" <lee@x.org>"}, {" "},
                                 {"<>", "dan@x.org "}),
            (std::vector<std::string>{"ann@x.org", "bob@x.org", "lee@x.org", "dan@x.org"}));
  EXPECT_EQ(BareAddress("Joe <joe@x.org"), "joe@x.org");
  EXPECT_EQ(BareAddress("O\"Brien <ob@x.org>"), "ob@x.org");
  EXPECT_EQ(BareAddress("\"O<Brien\" <ob@x.org>"), "ob@x.org");
  for (const auto* const good : {"a@b", "\"a\"@b.org", "a@b@c"}) {
    EXPECT_TRUE(IsSenderAddress(good)) << good;
  }
  for (const auto* const bad : {"", "joe", "@b", "a@", "a b@c", "a@b>", "a@\tb"}) {
    EXPECT_FALSE(IsSenderAddress(bad)) << bad;
  }
  EXPECT_TRUE(IsRecipientAddress("postmaster"));
}

}  // namespace
}  // namespace quillon
