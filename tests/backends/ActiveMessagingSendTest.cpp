// Messages that are made with Active Messaging: sent, and posted to folders.
#include <gtest/gtest.h>

#include "ActiveMessagingWorld.h"

namespace quillon::testing {
namespace {

constexpr auto kUserCancel = static_cast<std::int32_t>(0x80040113U);
constexpr const char* kRichText = "{\\rtf1 Hello}";

class ActiveMessagingSendTest : public ::testing::Test {
 protected:
  ActiveMessagingSendTest() {
    message.to = {"Ann Jones <SMTP:ann@example.com>"};
    message.subject = "Order";
    message.body = "Text";
  }

  MailResult Send() { return world.backEnd.Send(world.request); }
  MailResult Post() { return world.backEnd.Post(world.request); }
  std::size_t Count(const std::string& line) { return world.program.record.Count(line); }

  ActiveMessagingWorld world;
  AutomationRecord& record = world.program.record;
  MessageBuffers& message = world.shared.message;
  InstanceState& instance = world.instance;
};

// Everything that a message can have, so that every step of a send is taken.
void FillMessage(ActiveMessagingWorld& world) {
  auto& message = world.shared.message;
  message.to = {"Ann <ann@example.com>", "Bob"};
  message.cc = {"Cid"};
  message.bcc = {"Dan"};
  message.subject = "Order";
  message.body = kRichText;
  message.certify = kTrue;
  message.attachments = {{world.WriteFile("a.txt", "aaa"), "a.txt"},
                         {world.WriteFile("b.txt", "bbb"), "b.txt"}};
  world.instance.deliveryReport = 1;
  world.instance.sensitivity = 2;
  world.instance.messageType = "IPM.Note.Order";
  world.instance.nameResolution = kTrue;
  world.instance.attachmentEncoding = attachment_encoding::kArchiveEach;
  world.instance.forceDownload = kTrue;
  world.instance.conversationIndex = "ABC::REPLY";
}

TEST_F(ActiveMessagingSendTest, CallsTheMembersInTheirOrder) {
  message.cc = {"Cid"};
  message.bcc = {"\"Dan, D.\" <dan@example.com>"};
  message.certify = kTrue;
  const auto file = world.WriteFile("a.txt", "aaa");
  message.attachments = {{file, "shown.txt"}};
  ASSERT_TRUE(world.backEnd.Login(world.request).Succeeded());
  record.lines.clear();
  EXPECT_TRUE(Send().Succeeded());
  const std::vector<std::string> kLines = {
      "get Session.Outbox",
      "get Folder.Messages",
      "call Messages.Add",
      "put Message.subject 'Order'",
      "put Message.text 'Text'",
      "put Message.ReadReceipt True",
      "put Message.Importance 1",
      "get Message.Recipients",
      "call Recipients.Add   1",
      "put Recipient.Name 'Ann Jones'",
      "put Recipient.Address 'SMTP:ann@example.com'",
      "call Recipients.Add   3",
      "put Recipient.Name 'Dan, D.'",
      "put Recipient.Address 'dan@example.com'",
      "call Recipients.Add   2",
      "put Recipient.Name 'Cid'",
      "get Message.attachments",
      "call Attachments.Add",
      "put Attachment.Type 1",
      "put Attachment.Position 0",
      "put Attachment.source '" + file + "'",
      "put Attachment.Name 'shown.txt'",
      "call Message.Update",
      "call Message.Send showDialog=False",
  };
  EXPECT_EQ(record.lines, kLines);
  ASSERT_EQ(world.program.sent.size(), 1U);
  EXPECT_EQ(world.backEnd.MessageObject(), world.program.sent.front());
  EXPECT_TRUE(world.messageBox.shown.empty());
}

TEST_F(ActiveMessagingSendTest, OptionsBecomePropertiesOfTheMessage) {
  const struct {
    std::int16_t importance, report, sensitivity;
    std::vector<std::string> lines;
  } kCases[] = {
      {1, 0, 0, {"put Message.Importance 2"}},
      {2, 0, 4, {"put Message.Importance 2"}},
      {4, 1, 0, {"put Message.Importance 0", "call Fields.Add 201850891 True"}},
      {5,
       2,
       1,
       {"put Message.Importance 0", "call Fields.Add 2293771 True", "call Fields.Add 3538947 1"}},
      {3,
       3,
       3,
       {"put Message.Importance 1", "call Fields.Add 2293771 True", "call Fields.Add 3538947 3"}},
  };
  for (const auto& test : kCases) {
    record.lines.clear();
    instance.importance = test.importance;
    instance.deliveryReport = test.report;
    instance.sensitivity = test.sensitivity;
    EXPECT_TRUE(Send().Succeeded());
    for (const auto& line : test.lines) EXPECT_EQ(Count(line), 1U) << line;
    const auto adds =
        std::count_if(record.lines.begin(), record.lines.end(),
                      [](const std::string& line) { return line.starts_with("call Fields.Add"); });
    EXPECT_EQ(static_cast<std::size_t>(adds), test.lines.size() - 1);
  }
}

TEST_F(ActiveMessagingSendTest, ARecipientThatIsRefusedEndsTheSend) {
  const struct {
    std::vector<std::string> MessageBuffers::*list;
    const char* name;
  } kLists[] = {
      {&MessageBuffers::to, "TO"}, {&MessageBuffers::cc, "CC"}, {&MessageBuffers::bcc, "BCC"}};
  auto& messages = world.program.Messages(*world.program.outbox);
  const auto make = messages.make;
  for (const bool fails : {false, true}) {
    messages.make = [&](const AutomationArguments& arguments) {
      auto made = make(arguments);
      auto& recipients = FakeMessaging::Part(*made, "Recipients");
      recipients.make = [fails](const auto&) -> RecordingObjectPtr {
        if (fails) throw AutomationError(kNetworkError, "refused");
        return nullptr;
      };
      return made;
    };
    for (const auto& list : kLists) {
      message.to.clear();
      message.cc.clear();
      message.bcc.clear();
      message.*list.list = {"Somebody"};
      const auto result = Send();
      EXPECT_EQ(result.number, 25);
      EXPECT_EQ(result.text, "Invalid recipients.");
      EXPECT_EQ(world.messageBox.shown.back(),
                std::string("ActiveMessaging Mail Error|Unable to add ") + list.name +
                    " recipient. (MAPISendMailQLN_OLE): {25} Invalid recipients.");
    }
  }
  EXPECT_TRUE(messages.items.empty());
  EXPECT_EQ(world.backEnd.MessageObject(), nullptr);
}

TEST_F(ActiveMessagingSendTest, AnAttachmentThatIsRefusedEndsTheSend) {
  message.attachments = {{world.WriteFile("a.txt", "aaa"), "a.txt"}};
  record.failing["Attachments.Add"] = kNetworkError;
  EXPECT_EQ(Send().number, 13);
  EXPECT_EQ(world.messageBox.shown.back(),
            "ActiveMessaging Mail Error|Unable to create new attachment object. "
            "(MAPISendMailQLN_OLE): {13} Could not write attached file.");
  instance.folder = "Inbox";
  EXPECT_EQ(Post().number, 13);
  EXPECT_EQ(world.messageBox.shown.back(),
            "ActiveMessaging Mail Error|Unable to create new attachment object. "
            "(MAPIPostMessage_OLE): {13} Could not write attached file.");
  EXPECT_TRUE(world.program.Messages(*world.program.inbox).items.empty());

  message.attachments.front().file = world.sources.Path("gone.txt");
  instance.attachmentEncoding = attachment_encoding::kOneArchive;
  const auto adds = Count("call Messages.Add");
  EXPECT_EQ(FailureOf([&] { Send(); }), "534 ");
  EXPECT_EQ(Count("call Messages.Add"), adds);
}

// The n-th call fails, for every n: the number is told, nothing that could be sent later stays in
// a folder, no file stays in the temporary directory, and the next send needs no second session.
void FailEachCall(const std::function<MailResult(ActiveMessagingWorld&)>& operation,
                  const std::function<RecordingObject&(ActiveMessagingWorld&)>& place) {
  std::size_t failAt = 0;
  for (bool succeeded = false; !succeeded;) {
    ASSERT_LT(++failAt, 200U);
    ActiveMessagingWorld world;
    auto& record = world.program.record;
    FillMessage(world);
    auto& folder = place(world);
    record.failAt = failAt;
    record.failure = kNetworkError;
    const auto result = operation(world);
    succeeded = record.lines.size() < failAt;
    const auto& line = record.lines[std::min(failAt, record.lines.size()) - 1];
    // Without its version the library counts as missing, and is tried all the same.
    const bool ignored = line == "put Message.Name 'Order'" || line == "get Session.version";
    EXPECT_EQ(result.Succeeded(), succeeded || ignored) << line;
    if (!result.Succeeded()) {
      const auto number = line.starts_with("call Recipients.Add")    ? 25
                          : line.starts_with("call Attachments.Add") ? 13
                                                                     : 23;
      EXPECT_EQ(result.number, number) << line;
      EXPECT_EQ(world.messageBox.shown.size(), 1U) << line;
      EXPECT_EQ(world.backEnd.MessageObject(), nullptr) << line;
      EXPECT_TRUE(world.program.Messages(folder).items.empty()) << line;
      EXPECT_TRUE(world.program.sent.empty()) << line;
      EXPECT_TRUE(operation(world).Succeeded()) << line;
    }
    EXPECT_EQ(world.program.sent.size(), 1U) << line;
    EXPECT_EQ(world.program.sessions, 1) << line;
    EXPECT_TRUE(world.temporary.Names().empty()) << line;
  }
  EXPECT_GT(failAt, 35U);
}

TEST_F(ActiveMessagingSendTest, NothingHalfMadeIsLeftWhicheverCallFails) {
  FailEachCall([](auto& each) { return each.backEnd.Send(each.request); },
               [](auto& each) -> RecordingObject& { return *each.program.outbox; });
}

TEST_F(ActiveMessagingSendTest, NothingHalfPostedIsLeftWhicheverCallFails) {
  FailEachCall(
      [](auto& each) {
        each.instance.folder = "Public\\News";
        return each.backEnd.Post(each.request);
      },
      [](auto& each) -> RecordingObject& {
        auto& folder = each.program.AddFolder(each.program.AddStore("Public"), "News");
        each.program.record.lines.clear();
        return folder;
      });
}

TEST_F(ActiveMessagingSendTest, RichTextIsStoredWithTheSavedMessage) {
  message.body = kRichText;
  for (const std::int32_t answer : {0, 5}) {
    record.lines.clear();
    world.richText.answer = answer;
    instance.errorDisplay = kFalse;
    EXPECT_TRUE(Send().Succeeded());
    const auto id = world.program.sent.back()->Text("ID");
    EXPECT_EQ(world.richText.written.back(), "joe|" + id + "|store Mailbox - Joe|" + kRichText);
    EXPECT_EQ(Count("call Message.Update"), 2U);
    EXPECT_EQ(Count("call Session.GetMessage '" + id + "' 'store Mailbox - Joe'"), 1U);
    EXPECT_EQ(Count("put Messages.Filter Nothing"), 1U);
    EXPECT_EQ(record.lines.back(), "call Message.Send showDialog=False");
  }
  EXPECT_EQ(world.messageBox.shown,
            std::vector<std::string>{"VBSendRTF Warning|RTF Property not stored successfully!"});
  EXPECT_EQ(world.program.sent.size(), 2U);

  instance.loginName.clear();  // whoever has logged on
  EXPECT_TRUE(Send().Succeeded());
  EXPECT_TRUE(world.richText.written.back().starts_with("Profile of Joe|"));
}

TEST_F(ActiveMessagingSendTest, ClosingTheMailSystemsWindowNeedsNoBox) {
  record.failing["Message.Send"] = kUserCancel;
  instance.nativeMailDialog = kTrue;
  auto result = Send();
  EXPECT_EQ(result.number, 1);
  EXPECT_EQ(result.text, "The user aborted the operation.");
  EXPECT_EQ(Count("call Message.Send showDialog=True"), 1U);
  EXPECT_TRUE(world.messageBox.shown.empty());
  EXPECT_TRUE(world.program.Messages(*world.program.outbox).items.empty());

  record.failing["Message.Send"] = kNetworkError;
  EXPECT_EQ(Send().number, 23);
  EXPECT_EQ(world.messageBox.shown.back(),
            "ActiveMessaging Mail Error|Error sending mail (MAPISendMailQLN_OLE): {23} Network "
            "failure.");
  instance.errorDisplay = kFalse;
  record.failing["Message.Send"] = kMapiNotFound;
  result = Send();
  EXPECT_EQ(result.number, kMapiNotFound);
  EXPECT_EQ(result.text, "Invalid recipients.");
  EXPECT_EQ(world.messageBox.shown.size(), 1U);
}

TEST_F(ActiveMessagingSendTest, ManyRecipientsAttachmentsAndLettersGoUnchanged) {
  message.to.clear();
  for (int i = 0; i < 2000; ++i) message.to.push_back("name " + std::to_string(i));
  const auto file = world.WriteFile("a.txt", "aaa");
  for (int i = 0; i < 500; ++i) message.attachments.push_back({file, std::to_string(i) + ".txt"});
  message.subject = std::string(10000, 'x') + " \xE6\x97\xA5\xE6\x9C\xAC";
  message.body = "\xF0\x9F\x93\xA7";
  EXPECT_TRUE(Send().Succeeded());
  auto& sent = *world.program.sent.at(0);
  EXPECT_EQ(sent.Text("subject"), message.subject);
  EXPECT_EQ(sent.Text("text"), message.body);
  const auto& recipients = FakeMessaging::Part(sent, "Recipients").items;
  ASSERT_EQ(recipients.size(), 2000U);
  EXPECT_EQ(recipients.back()->Text("Name"), "name 1999");
  const auto& attachments = FakeMessaging::Part(sent, "Attachments").items;
  ASSERT_EQ(attachments.size(), 500U);
  EXPECT_EQ(attachments.back()->Text("Name"), "499.txt");
}

TEST_F(ActiveMessagingSendTest, APostTakesItsPlaceInAConversation) {
  world.program.AddFolder(world.program.AddStore("Public"), "News");
  instance.folder = "public\\\\NEWS";
  message.subject = "RE: re: Order";
  const struct {
    const char* index;
    const char* made;
  } kCases[] = {
      {"", "NEW"},
      {"  ", "NEW"},
      {"ABC", "ABC"},
      {"::REPLY", "::REPLY"},
      {" ABC::REPLY ", "ABC-CHILD"},
  };
  for (const auto& test : kCases) {
    instance.conversationIndex = test.index;
    record.lines.clear();
    EXPECT_TRUE(Post().Succeeded());
    EXPECT_EQ(instance.conversationIndex, test.made) << test.index;
    auto& posted = *world.program.sent.back();
    EXPECT_EQ(posted.Text("ConversationIndex"), test.made);
    EXPECT_EQ(posted.Text("conversationTopic"), "Order");
    EXPECT_EQ(posted.Text("subject"), "RE: re: Order");
    EXPECT_EQ(posted.Text("text"), "Text");
    EXPECT_EQ(RealOf(posted.properties["TimeReceived"]), 46348.75);
    EXPECT_EQ(TextOf(world.backEnd.FolderObject()->Get("Name")), "News");
  }
  // It goes to nobody but the folder, where it is; other failures count.
  record.failing = {{"Message.Send", static_cast<std::int32_t>(0x80040607U)}};
  EXPECT_TRUE(Post().Succeeded());
  EXPECT_EQ(Count("call Message.Delete"), 0U);
  record.failing = {{"Message.Send", static_cast<std::int32_t>(0x80070005U)}};
  EXPECT_EQ(Post().number, 131);
  EXPECT_EQ(Count("call Message.Delete"), 1U);
  record.failing.clear();
  instance.folder = "Public\\None";
  EXPECT_EQ(Post().number, 50);
  EXPECT_EQ(world.messageBox.shown.back(),
            "ActiveMessaging Mail Error|Bad folder name.: {50} Bad folder name.");
  instance.folder.clear();
  EXPECT_EQ(FailureOf([&] { Post(); }), "551 ");
}

TEST_F(ActiveMessagingSendTest, NamesAreResolvedOnAMessageThatGoesAway) {
  std::string resolved;
  EXPECT_TRUE(world.backEnd.ResolveName(world.request, "ann", false, resolved).Succeeded());
  EXPECT_EQ(resolved, "ann");
  EXPECT_TRUE(world.backEnd.ResolveName(world.request, "ann", true, resolved).Succeeded());
  EXPECT_EQ(resolved, "ann <SMTP:ann@example.com>");
  EXPECT_EQ(Count("call Recipient.Resolve False"), 2U);
  const std::map<std::string, std::int32_t> kFailures = {
      {"Recipient.Resolve", 101}, {"Recipients.Add", 101}, {"Recipient.Name", 101}};
  for (const auto& [member, number] : kFailures) {
    record.failing = {{member, static_cast<std::int32_t>(0x80040700U)}};
    EXPECT_EQ(world.backEnd.ResolveName(world.request, "ann", true, resolved).number, number);
    EXPECT_EQ(resolved, "");
  }
  record.failing = {{"Recipient.Resolve", static_cast<std::int32_t>(0x80040113U)}};
  EXPECT_EQ(world.backEnd.ResolveName(world.request, "ann", true, resolved).text,
            "User selected cancel in ResolveName dialog.");
  EXPECT_TRUE(world.program.Messages(*world.program.outbox).items.empty());
  EXPECT_EQ(Count("call Message.Delete"), 6U);
}

}  // namespace
}  // namespace quillon::testing
