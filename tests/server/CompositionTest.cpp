#include <gtest/gtest.h>

#include "core/Text.h"
#include "core/WholeFile.h"
#include "support/TestWorld.h"

namespace quillon {
namespace {

using testing::BytesOf;
using testing::ContentOf;
using testing::FailureOf;
using testing::TestWorld;

std::string Text(const Value& value) {
  return ToText(value);
}

TEST(Composition, RecipientsAreSplitTrimmedAndCounted) {
  TestWorld world;
  const auto server = world.NewServer();
  server->AddRecipientTo("  ");
  EXPECT_EQ(0, server->GetMessageItemCount(1));
  server->AddRecipientTo(" Ann <a@x>, b@y ");
  server->Put(Property::recipientDelimiter, std::string(";"));
  server->AddRecipientCc("c,c@z; d@z");
  EXPECT_EQ("Ann <a@x>, b@y", server->GetMessageItemString(1));
  EXPECT_EQ("c,c@z|d@z", Join(server->GetMessageItems(2), "|"));
  EXPECT_EQ("b@y", Text(server->GetMessageItem(std::int16_t{1}, 1)));
  EXPECT_EQ("529 Invalid parameter.", FailureOf([&] { server->GetMessageItem(1, 2); }));
  EXPECT_EQ("529 Invalid parameter.", FailureOf([&] { server->GetMessageItems(8); }));
}

TEST(Composition, ListsEndWhereTheirCountsDo) {
  TestWorld world;
  const auto server = world.NewServer();
  ASSERT_TRUE(WriteWholeFile(*world.files, world.folder.Path("a.txt"), BytesOf("a")));
  world.shared.message.to.resize(32766);
  world.shared.message.bcc.resize(32767);
  world.shared.message.attachments.resize(32767);
  EXPECT_EQ("519 Too many To recipients.", FailureOf([&] { server->AddRecipientTo("a,b"); }));
  EXPECT_EQ(32767, server->GetMessageItemCount(1));
  EXPECT_EQ("517 Too many Bcc recipients.", FailureOf([&] { server->AddRecipientBcc("a"); }));
  EXPECT_EQ("520 Too many attachments.",
            FailureOf([&] { server->AddAttachment(world.folder.Path("a.txt")); }));
}

TEST(Composition, FilesMustExist) {
  TestWorld world;
  const auto server = world.NewServer();
  const auto file = world.folder.Path("a b.txt");
  ASSERT_TRUE(WriteWholeFile(*world.files, file, BytesOf("a")));
  server->AddAttachment(" ");
  server->AddAttachment("  " + file + " ");
  EXPECT_EQ(file, server->GetMessageItemString(6));
  EXPECT_EQ("a b.txt", server->GetMessageItemString(7));
  EXPECT_EQ("521 Attachment does not exist.", FailureOf([&] { server->AddAttachment("nope"); }));
  EXPECT_EQ("521 Alternative nope does not exist.",
            FailureOf([&] { server->AddAlternative("nope", "text/html", 0); }));
  EXPECT_EQ("529 Invalid parameter.", FailureOf([&] { server->AddAlternative(file, " ", 0); }));
  server->AddAlternative(file, "text/html", 0);
  EXPECT_EQ(1U, world.shared.message.alternatives.size());
}

TEST(Composition, FilesByOtherNamesAndTypes) {
  TestWorld world;
  const auto server = world.NewServer();
  const auto file = world.folder.Path("a.png");
  ASSERT_TRUE(WriteWholeFile(*world.files, file, BytesOf("a")));
  const auto add = [&](const char* name, const char* type) {
    return FailureOf([&] { server->AddAttachmentEx(file, name, type); });
  };
  EXPECT_EQ("", add("", ""));
  EXPECT_EQ("", add(" b.pdf ", ""));
  EXPECT_EQ("", add("c", " Text/X-a+b.1 "));
  for (const auto* type : {"text", "text/", "/a", "a/b/c", "a/b; c=d", "a b/c", "a/\xC3\xA9",
                           "Multipart/mixed", "message/rfc822", "a/b\r\nTo: c"}) {
    EXPECT_EQ("529 \"" + std::string(type) + "\" is no content type of a file.", add("", type));
  }
  EXPECT_EQ("529 Invalid parameter.", FailureOf([&] { server->AddAttachmentEx(" ", "a", ""); }));
  EXPECT_EQ("521 Attachment does not exist.",
            FailureOf([&] { server->AddAttachmentEx("nope", "", ""); }));
  EXPECT_EQ("a.png, b.pdf, c", server->GetMessageItemString(7));
  EXPECT_EQ("image/png, application/pdf, Text/X-a+b.1", server->GetMessageItemString(13));
}

TEST(Composition, HtmlAndItsPictures) {
  TestWorld world;
  const auto server = world.NewServer();
  const auto file = world.folder.Path("a.png");
  ASSERT_TRUE(WriteWholeFile(*world.files, file, BytesOf("a")));
  for (const std::string id : {"", "<>", "a b", "a<b", "\xC3\xA9", "a\tb"}) {
    EXPECT_EQ("529 Invalid parameter.", FailureOf([&] { server->AddInlineFile(file, id); })) << id;
  }
  EXPECT_EQ("521 Attachment does not exist.",
            FailureOf([&] { server->AddInlineFile("nope", "a"); }));
  server->AddInlineFile(file, " <a@b> ");
  server->AddInlineFile(file, "c");
  server->AddInlineFile(file, "a@b");  // in place of the first one
  EXPECT_EQ("a@b, c", server->GetMessageItemString(14));

  auto& message = world.shared.message;
  message.receivedHtml = "<img src=cid:d>";
  EXPECT_EQ("d", server->GetMessageItemString(16));
  EXPECT_EQ("<img src=cid:d>", Text(server->Get(Property::HTMLMessage)));
  EXPECT_EQ("", message.html);  // is not sent on
  server->Put(Property::HTMLMessage, std::string("<img src=cid:e><img src=cid:c>"));
  EXPECT_EQ("e, c", server->GetMessageItemString(16));
  EXPECT_EQ(1, server->GetMessageItemCount(15));
  server->Put(Property::HTMLMessage, std::string());
  EXPECT_EQ(0, server->GetMessageItemCount(15));
  message.html = message.receivedHtml = "a";
  server->NewMessage();
  EXPECT_EQ("", Text(server->Get(Property::HTMLMessage)));
}

TEST(Composition, HeadersOfTheServerAreReserved) {
  TestWorld world;
  const auto server = world.NewServer();
  for (const auto* name : {"date", " Subject ", "X-Mailer", "mailer", "Priority", "reply-to",
                           "X-MSMAIL-PRIORITY", "SpecialBuild", "Content-Type", "MIME-Version"}) {
    EXPECT_EQ("545 Reserved header.", FailureOf([&] { server->AddXHeader(name, "v"); })) << name;
  }
  for (const auto* name : {"", "a:b", "a b", "a\r\nTo", "\xC3\xA9"}) {
    EXPECT_EQ("529 Invalid parameter.", FailureOf([&] { server->AddXHeader(name, "v"); })) << name;
  }
  server->AddXHeader(" Loop ", "v");
  EXPECT_EQ("Loop", world.shared.message.xHeaders.at(0).name);
}

TEST(Composition, AWholeHeaderHasOneValueAndIsNotTheServers) {
  TestWorld world;
  const auto server = world.NewServer();
  for (const auto* name : {"date", "X-Mailer", "bcc", "Content-Language", "resent-from"}) {
    EXPECT_EQ("545 Reserved header.", FailureOf([&] { server->AddHeader(name, "v"); })) << name;
  }
  const std::string longName(71, 'x');
  for (const auto& name : {std::string(), std::string("a:b"), std::string("a\r\nTo"), longName}) {
    EXPECT_EQ("529 Invalid parameter.", FailureOf([&] { server->AddHeader(name, "v"); })) << name;
  }
  server->AddHeader(" List-Id ", "one");
  server->AddHeader("Priority", "urgent");
  server->AddHeader("LIST-ID", "two");
  server->AddHeader("priority", " ");
  const auto& headers = world.shared.message.headers;
  ASSERT_EQ(1U, headers.size());
  EXPECT_EQ("LIST-ID two", headers[0].name + " " + headers[0].value);
  server->NewMessage();
  EXPECT_TRUE(headers.empty());
}

TEST(Composition, ItemsAreClearedOneByOneOrTogether) {
  TestWorld world;
  const auto server = world.NewServer();
  auto& message = world.shared.message;
  const auto fill = [&] {
    message.to = message.cc = message.bcc = {"x"};
    message.subject = message.body = message.auxiliaryText = "x";
    message.attachments = {{"f", "n"}};
    message.alternatives = {{"f", "t"}};
    message.xHeaders = {{"n", "v"}};
    message.from = message.replyTo = "kept";
  };
  const auto counts = [&] {
    std::string text;
    for (const int type : {1, 2, 3, 4, 5, 6, 7, 150}) {
      text += std::to_string(server->GetMessageItemCount(static_cast<std::int16_t>(type)));
    }
    return text;
  };
  const std::pair<std::int16_t, const char*> kCases[] = {
      {1, "01111111"}, {2, "10111111"}, {3, "11011111"},  {4, "11101111"},
      {5, "11110111"}, {6, "11111001"}, {150, "11111110"}};
  for (const auto& [type, expected] : kCases) {
    fill();
    server->ClearMessageItems(type);
    EXPECT_EQ(expected, counts());
  }
  EXPECT_EQ("529 Invalid parameter.", FailureOf([&] { server->ClearMessageItems(7); }));
  for (const auto member : {&Server::NewMessage, &Server::NewMessagePost}) {
    fill();
    ((*server).*member)();
    EXPECT_EQ("00000000", counts());
    EXPECT_TRUE(message.alternatives.empty() && message.xHeaders.empty());
    EXPECT_EQ("kept", Text(server->Get(Property::from)));
  }
}

TEST(Composition, HeaderItemsReadTheCurrentHeader) {
  TestWorld world;
  const auto server = world.NewServer();
  EXPECT_EQ("532 No valid message headers have been loaded.",
            FailureOf([&] { server->GetHeaderItemString(4); }));
  world.shared.headers.resize(2);
  auto& header = world.shared.headers[1];
  header.to = "\"A, B\" <a@x>,b@y";
  header.subject = "Hello";
  header.contentLength = "12";
  header.priority = 5;
  header.receiptRequested = kTrue;
  server->Put(Property::messageIndex, 1);
  EXPECT_EQ("\"A, B\" <a@x>|b@y", Join(server->GetHeaderItems(1), "|"));
  EXPECT_EQ("Hello", server->GetHeaderItemString(4));
  EXPECT_EQ("12", server->GetHeaderItemString(26));
  EXPECT_EQ("5", server->HeaderItems(25).at(0));
  EXPECT_EQ("-1", server->GetHeaderItemString(27));
  EXPECT_TRUE(server->GetHeaderItems(10).empty());
  EXPECT_EQ("529 Invalid parameter.", FailureOf([&] { server->HeaderItems(5); }));
  const auto details = [&] {
    std::vector<std::string> items;
    for (std::int16_t type = 30; type <= 35; ++type) {
      items.push_back(Join(server->GetHeaderItems(type), ","));
    }
    return Join(items, "|");
  };
  EXPECT_EQ("|||||", details());
  header.details =
      std::make_shared<MessageDetails>(MessageDetails{"IPM.Note", "Topic", "0101", kTrue, 2, 3});
  EXPECT_EQ("IPM.Note|Topic|0101|-1|2|3", details());
}

TEST(Composition, WebFormsAreReadFromTheLoadedText) {
  TestWorld world;
  const auto server = world.NewServer();
  server->Put(Property::Message, std::string("name=John+Smith&city=New%20York\r\n"));
  EXPECT_EQ("John Smith", server->GetWebFormValue(" Name "));
  EXPECT_EQ("New York", server->GetWebFormValue("city"));
  EXPECT_EQ("", server->GetWebFormValue("street"));
}

TEST(Composition, AnyTextSurvivesMessageFiles) {
  TestWorld world;
  const auto server = world.NewServer();
  const auto path = world.folder.Path("message.txt");
  const std::string kTexts[] = {
      "plain\r\nlines",
      "caf\xC3\xA9 \xE2\x82\xAC",
      std::string("nul\0inside", 10),
      "\xE6\x97\xA5\xE6\x9C\xAC",
      "\xED\xA0\x80 alone",
      "",
      "\xC3\xAF\xC2\xBB\xC2\xBF looks like a mark",
      "\xC3\x83\xC2\xA9 looks like UTF-8",
  };
  for (const auto& text : kTexts) {
    server->Put(Property::Message, text);
    server->SaveMessageToFile(path);
    server->NewMessage();
    server->LoadMessageFromFile(path);
    EXPECT_EQ(text, Text(server->Get(Property::Message)));
  }
  server->Put(Property::Message, kTexts[1]);
  server->SaveMessageToFile(path);
  EXPECT_EQ("caf\xE9 \x80", ContentOf(*world.files, path));  // what ANSI holds is written as ANSI

  ASSERT_TRUE(WriteWholeFile(*world.files, path,
                             BytesOf(std::string_view("\xFE\xFF\0A\xD8\x3D\xDE\x00", 8))));
  server->LoadMessageFromFile(path);
  EXPECT_EQ("A\xF0\x9F\x98\x80", Text(server->Get(Property::Message)));

  ASSERT_TRUE(WriteWholeFile(*world.files, path, BytesOf("caf\xC3\xA9")));  // without a mark
  server->LoadMessageFromFile(path);
  EXPECT_EQ("caf\xC3\xA9", Text(server->Get(Property::Message)));
}

TEST(Composition, MessageFilesFailClearly) {
  TestWorld world;
  const auto server = world.NewServer();
  EXPECT_EQ("547 File not specified.", FailureOf([&] { server->LoadMessageFromFile(" "); }));
  EXPECT_EQ("547 File not specified.", FailureOf([&] { server->SaveMessageToFile(""); }));
  EXPECT_EQ("548 File does not exist.",
            FailureOf([&] { server->LoadMessageFromFile(world.folder.Path("none")); }));
  EXPECT_EQ("75 Undetermined error in SaveMessageToFile method.",
            FailureOf([&] { server->SaveMessageToFile(world.folder.Path("none/deeper.txt")); }));
}

}  // namespace
}  // namespace quillon
