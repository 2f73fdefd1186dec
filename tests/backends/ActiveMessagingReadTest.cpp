// Messages that are read, moved and deleted with Active Messaging.
#include <gtest/gtest.h>

#include "ActiveMessagingWorld.h"

namespace quillon::testing {
namespace {

class ActiveMessagingReadTest : public ::testing::Test {
 protected:
  MailResult Load() { return world.backEnd.LoadMessageHeaders(world.request); }
  MailResult Read() { return world.backEnd.LoadMessage(world.request); }
  const HeaderTable& Headers() { return world.shared.headers; }
  std::size_t Count(const std::string& line) { return world.program.record.Count(line); }
  const std::string& LastBox() { return world.messageBox.shown.back(); }

  // Without properties that every message has, as mail programs store drafts and reports.
  RecordingObject& Bare(RecordingObject& folder) {
    auto& message = world.program.AddMessage(folder, "");
    message.properties.erase("subject");
    message.methods["subject"] = [](const auto&) -> AutomationValue {
      throw AutomationError(kMapiNotFound, "subject");
    };
    return message;
  }
  RecordingObject& Full(RecordingObject& folder) {
    auto& message = world.program.AddMessage(folder, "Order \xE2\x82\xAC");
    message.properties["text"] = "Text";
    message.properties["Unread"] = true;
    message.properties["Type"] = "IPM.Note";
    message.properties["TimeSent"] = AutomationDate{46348.75};
    message.properties["conversationTopic"] = "Order";
    message.properties["ConversationIndex"] = "0101";
    message.properties["Importance"] = 2;
    message.properties["ReadReceipt"] = true;
    message.properties["DeliveryReceipt"] = true;
    sender->properties["Name"] = "Ann";
    sender->properties["Address"] = " ann@example.com ";
    message.properties["sender"] = AutomationObjectPtr(sender);
    FakeMessaging::AddRecipient(message, 1, "Joe");
    FakeMessaging::AddRecipient(message, 2, "Cid");
    FakeMessaging::AddRecipient(message, 3, "Dan");
    FakeMessaging::AddRecipient(message, 1, "Bob");
    return message;
  }

  ActiveMessagingWorld world;
  AutomationRecord& record = world.program.record;
  InstanceState& instance = world.instance;
  FakeMessaging& program = world.program;
  RecordingObjectPtr sender = std::make_shared<RecordingObject>(record, "AddressEntry");
};

TEST_F(ActiveMessagingReadTest, HeadersHoldWhatTheMessagesSay) {
  program.AddAttachment(Full(*program.inbox), 1, "a.txt", "aaa");
  Bare(*program.inbox);
  ASSERT_TRUE(Load().Succeeded());
  ASSERT_EQ(Headers().size(), 2U);
  const auto& full = Headers()[0];
  EXPECT_EQ(full.number, "1");
  EXPECT_EQ(full.uniqueId, program.Messages(*program.inbox).items[0]->Text("ID"));
  EXPECT_EQ(full.subject, "Order \xE2\x82\xAC");
  EXPECT_EQ(full.status, kStatusUnread);
  EXPECT_EQ(full.dateText, "11/22/2026 6:00:00 PM");
  EXPECT_EQ(full.priority, 1);
  EXPECT_EQ(full.receiptRequested, kTrue);
  EXPECT_EQ(full.originator, "Ann <ann@example.com>");
  ASSERT_NE(full.details, nullptr);
  EXPECT_EQ(full.details->type, "IPM.Note");
  EXPECT_EQ(full.details->conversationTopic, "Order");
  EXPECT_EQ(full.details->conversationIndex, "0101");
  EXPECT_EQ(full.details->deliveryReport, kTrue);
  EXPECT_EQ(full.details->attachments, 1);
  EXPECT_EQ(full.details->recipients, 4);

  const auto& bare = Headers()[1];
  EXPECT_EQ(bare.number, "2");
  EXPECT_EQ(bare.subject + bare.dateText + bare.originator, "");
  EXPECT_EQ(bare.status, kStatusRead);
  EXPECT_EQ(bare.priority, 3);
  EXPECT_EQ(record.Count("call Messages.Sort 1 235274304"), 1U);
  instance.dateSort = kFalse;
  EXPECT_TRUE(Load().Succeeded());
  EXPECT_EQ(record.Count("call Messages.Sort 0"), 1U);
}

TEST_F(ActiveMessagingReadTest, DatesFollowTheFormatAndImportanceTheScale) {
  auto& message = Full(*program.inbox);
  const struct {
    AutomationValue date;
    const char* format;
    const char* text;
  } kDates[] = {
      {AutomationDate{46348.75}, "", "11/22/2026 6:00:00 PM"},
      {AutomationDate{46348.75}, "native", "11/22/2026 6:00:00 PM"},
      {AutomationDate{46348.75}, "FIXED", "Nov 22, 2026 18:00:00"},
      {AutomationDate{46348.75}, "yyyy-mm-dd", "2026-11-22"},
      {AutomationDate{0}, "yyyy-mm-dd", ""},
      {"2026/11/22 18:00", "yyyy-mm-dd", "2026-11-22"},
      {"2026/11/22 18:00", "NATIVE", "2026/11/22 18:00"},
      {"yesterday", "FIXED", "yesterday"},
      {{}, "FIXED", ""},
  };
  for (const auto& test : kDates) {
    message.properties["TimeSent"] = test.date;
    instance.dateFormat = test.format;
    ASSERT_TRUE(Load().Succeeded());
    EXPECT_EQ(Headers()[0].dateText, test.text) << test.format;
  }
  for (const auto& [importance, priority] : {std::pair{0, 5}, {1, 3}, {2, 1}}) {
    message.properties["Importance"] = importance;
    ASSERT_TRUE(Load().Succeeded());
    EXPECT_EQ(Headers()[0].priority, priority);
  }
  message.properties["Unread"] = "neither";
  EXPECT_EQ(Load().number, kAutomationTypeMismatch);
}

TEST_F(ActiveMessagingReadTest, HeadersComeFromTheFolder) {
  auto& archive = program.AddFolder(program.AddStore("Archive"), "2025");
  program.AddMessage(archive, "archived");
  program.AddMessage(program.AddFolder(*program.inbox, "Orders"), "ordered");
  program.AddMessage(*program.inbox, "arrived");
  const struct {
    const char* folder;
    const char* delimiter;
    const char* subject;
  } kCases[] = {
      {"", "\\\\", "arrived"},
      {"InBox", "\\\\", "arrived"},
      {"inbox/orders", "/", "ordered"},
      {"Mailbox - Joe\\\\Inbox\\\\Orders", "\\\\", "ordered"},
      {"\\\\Mailbox - Joe\\Inbox", "\\\\", "arrived"},
      {"archive::2025", "::", "archived"},
  };
  for (const auto& test : kCases) {
    instance.folder = test.folder;
    instance.folderDelimiter = test.delimiter;
    ASSERT_TRUE(Load().Succeeded()) << test.folder;
    ASSERT_EQ(Headers().size(), 1U) << test.folder;
    EXPECT_EQ(Headers()[0].subject, test.subject) << test.folder;
    EXPECT_TRUE(Read().Succeeded()) << test.folder;
    EXPECT_EQ(world.shared.message.subject, test.subject);
  }
  for (const auto* const folder : {"None", "Archive::None", "Archive::::2025", "::"}) {
    instance.folder = folder;
    EXPECT_EQ(Load().number, 50) << folder;
    EXPECT_EQ(LastBox(), "ActiveMessaging Mail Error|Bad folder name.: {50} Bad folder name.");
  }
  EXPECT_EQ(Headers().size(), 1U);  // those that were there
  record.failing["Session.Inbox"] = kNetworkError;
  instance.folder.clear();
  EXPECT_EQ(Load().number, 23);
  EXPECT_EQ(LastBox(),
            "ActiveMessaging Mail Error|Could not connect to InBox.: {23} Network failure.");
}

TEST_F(ActiveMessagingReadTest, ListsEndAtTheMaximum) {
  program.AddMessage(*program.inbox, "again and again");
  program.Messages(*program.inbox).endless = true;
  instance.maximumHeaders = 3;
  EXPECT_TRUE(Load().Succeeded());
  EXPECT_EQ(Headers().size(), 3U);
  std::int32_t unread = 0;
  EXPECT_TRUE(world.backEnd.UnreadCount(world.request, unread).Succeeded());
  EXPECT_EQ(unread, 1000);
}

TEST_F(ActiveMessagingReadTest, UnreadMessagesAndTypesAreFiltered) {
  auto& message = program.AddMessage(*program.inbox, "read");
  message.properties["Unread"] = false;
  program.AddMessage(*program.inbox, "unread").properties["Unread"] = true;
  std::int32_t unread = 0;
  instance.messageType = "IPM.Order";
  EXPECT_TRUE(world.backEnd.UnreadCount(world.request, unread).Succeeded());
  EXPECT_EQ(unread, 1);
  EXPECT_TRUE(Headers().empty());
  instance.unreadOnly = kTrue;
  EXPECT_TRUE(Load().Succeeded());
  ASSERT_EQ(Headers().size(), 1U);
  EXPECT_EQ(Headers()[0].subject, "unread");
  EXPECT_EQ(Count("put Filter.Type 'IPM.Order'"), 1U);
}

TEST_F(ActiveMessagingReadTest, HeadersThatHaveComeStayWhenTheNextFails) {
  program.AddMessage(*program.inbox, "one");
  auto& second = program.AddMessage(*program.inbox, "two");
  second.methods["Unread"] = [](const auto&) -> AutomationValue {
    throw AutomationError(kNetworkError, "lost");
  };
  EXPECT_EQ(Load().number, 23);
  ASSERT_EQ(Headers().size(), 1U);
  EXPECT_EQ(Headers()[0].subject, "one");
}

TEST_F(ActiveMessagingReadTest, AMessageIsReadWithItsFiles) {
  auto& message = Full(*program.inbox);
  const std::string bytes("\x00\xFF\r\n", 4);
  program.AddAttachment(message, 1, "a.txt", bytes);
  program.AddAttachment(message, 4, "embedded", "");
  program.AddAttachment(message, 2, "link", "");
  program.AddAttachment(message, 3, "a.txt", "object");
  program.AddAttachment(message, 1, "", "nameless");
  auto& shared = world.shared;
  shared.message.xHeaders = {{"Old", "value"}};
  ASSERT_TRUE(Load().Succeeded());
  instance.peekOnly = kTrue;
  ASSERT_TRUE(Read().Succeeded());
  EXPECT_TRUE(TruthOf(message.properties["Unread"]));
  EXPECT_EQ(Join(shared.message.to, ",") + "|" + Join(shared.message.cc, ",") + "|" +
                Join(shared.message.bcc, ","),
            "Joe,Bob|Cid|Dan");
  EXPECT_EQ(shared.message.subject, "Order \xE2\x82\xAC");
  EXPECT_EQ(shared.message.body, "Text");
  EXPECT_EQ(shared.message.from, "Ann <ann@example.com>");
  EXPECT_EQ(shared.message.dateSent, "11/22/2026 6:00:00 PM");
  EXPECT_TRUE(shared.message.xHeaders.empty());
  ASSERT_EQ(shared.message.attachments.size(), 3U);
  EXPECT_EQ(shared.message.attachments[0].displayName, "a.txt");
  EXPECT_EQ(ContentOf(*world.files, shared.message.attachments[0].file), bytes);
  EXPECT_EQ(ContentOf(*world.files, shared.message.attachments[1].file), "object");
  EXPECT_EQ(ContentOf(*world.files, shared.message.attachments[2].file), "nameless");
  EXPECT_EQ(world.folder.Names(), (std::vector<std::string>{"TEMPFILE.TMP", "a.txt", "a1.txt"}));
  EXPECT_EQ(world.backEnd.MessageObject(), program.Messages(*program.inbox).items[0]);

  instance.peekOnly = kFalse;
  instance.suppressAttachments = kTrue;
  ASSERT_TRUE(Read().Succeeded());
  EXPECT_TRUE(shared.message.attachments.empty());
  EXPECT_FALSE(TruthOf(message.properties["Unread"]));
  EXPECT_EQ(Count("call Message.Update"), 1U);
}

TEST_F(ActiveMessagingReadTest, WhatCannotBeReadChangesNothing) {
  auto& message = Full(*program.inbox);
  program.AddAttachment(message, 1, "a.txt", "aaa");
  program.AddAttachment(message, 1, "b.txt", "bbb");
  ASSERT_TRUE(Load().Succeeded());
  world.shared.message.subject = "mine";
  const auto length = record.lines.size();
  ASSERT_TRUE(Read().Succeeded());
  const auto calls = record.lines.size() - length;
  for (const auto& file : world.shared.message.attachments) world.files->RemoveFile(file.file);
  for (std::size_t failAt = 1; failAt <= calls; ++failAt) {
    world.shared.message.subject = "mine";
    record.lines.clear();
    record.failAt = failAt;
    record.failure = kNetworkError;
    EXPECT_EQ(Read().number, 23) << record.lines.back();
    EXPECT_EQ(world.shared.message.subject, "mine") << record.lines.back();
    EXPECT_TRUE(world.folder.Names().empty()) << record.lines.back();
    EXPECT_EQ(world.backEnd.MessageObject(), nullptr) << record.lines.back();
  }
  record.failAt = 0;
  instance.attachmentDirectory = world.folder.Path("none");
  EXPECT_EQ(Read().number, 13);
}

TEST_F(ActiveMessagingReadTest, CountsAreNotBelieved) {
  auto& message = Full(*program.inbox);
  program.AddAttachment(message, 1, "a.txt", "aaa");
  ASSERT_TRUE(Load().Succeeded());
  const struct {
    std::int32_t claimed;
    std::size_t recipients;
    std::size_t files;
  } kCases[] = {{2000000000, 2, 1}, {-5, 0, 0}, {1, 1, 1}};
  for (const auto& test : kCases) {
    FakeMessaging::Part(message, "Recipients").claimed = test.claimed;
    FakeMessaging::Part(message, "Attachments").claimed = test.claimed;
    ASSERT_TRUE(Read().Succeeded());
    EXPECT_EQ(world.shared.message.to.size(), test.recipients) << test.claimed;
    EXPECT_EQ(world.shared.message.attachments.size(), test.files) << test.claimed;
  }
}

TEST_F(ActiveMessagingReadTest, OnlyHeadersOfThisMailSystemLeadToMessages) {
  const std::function<void()> kCalls[] = {
      [&] { Read(); },
      [&] { world.backEnd.DeleteMessage(world.request); },
      [&] { world.backEnd.MoveCopyMessage(world.request, "Inbox", true); },
  };
  for (const auto& call : kCalls) EXPECT_EQ(FailureOf(call), "532 ");
  program.AddMessage(*program.inbox, "one");
  ASSERT_TRUE(Load().Succeeded());
  instance.messageIndex = 1;
  for (const auto& call : kCalls) EXPECT_EQ(FailureOf(call), "533 ");
  instance.messageIndex = 0;
  world.shared.headerOrigin.mailbox = "joe@POP.EXAMPLE";
  for (const auto& call : kCalls) EXPECT_EQ(FailureOf(call), "532 ");
}

TEST_F(ActiveMessagingReadTest, AMessageIsDeletedOrToldWhyNot) {
  program.AddMessage(*program.inbox, "one");
  ASSERT_TRUE(Load().Succeeded());
  record.failing["Message.Delete"] = static_cast<std::int32_t>(0x80070005U);
  EXPECT_EQ(world.backEnd.DeleteMessage(world.request).number, 131);
  EXPECT_EQ(LastBox(), "ActiveMessaging Mail Error|Error deleting message: {131} No access.");
  record.failing.clear();
  EXPECT_TRUE(world.backEnd.DeleteMessage(world.request).Succeeded());
  EXPECT_TRUE(program.Messages(*program.inbox).items.empty());
  EXPECT_EQ(world.backEnd.DeleteMessage(world.request).number, kMapiNotFound);
  EXPECT_EQ(LastBox(),
            "ActiveMessaging Mail Error|Error getting mail message (OLE GetMessage): "
            "{-2147221233} Invalid recipients.");
  program.session->methods["GetMessage"] = [](const auto&) {
    return AutomationValue(AutomationObjectPtr());
  };
  EXPECT_EQ(Read().number, 17);
}

TEST_F(ActiveMessagingReadTest, AMessageIsMovedAndCopiedIntoAFolder) {
  auto& archive = program.AddFolder(program.AddStore("Archive"), "2025");
  program.AddMessage(*program.inbox, "one");
  ASSERT_TRUE(Load().Succeeded());
  const auto move = [&](const char* folder, bool copy) {
    return world.backEnd.MoveCopyMessage(world.request, folder, copy).number;
  };
  const struct {
    const char* folder;
    bool copy;
    const char* box;
  } kRefused[] = {
      {"", false, "No destination folder specified."},
      {"None", false, "Error moving message, folder could not be located or created - None"},
      {"Archive\\\\None", true,
       "Error copying message, folder could not be located or created - Archive\\\\None"},
      {"Archive\\\\\\\\2025", true, "Bad folder name."},
  };
  for (const auto& test : kRefused) {
    EXPECT_EQ(move(test.folder, test.copy), 50) << test.folder;
    EXPECT_EQ(LastBox(),
              std::string("ActiveMessaging Mail Error|") + test.box + ": {50} Bad folder name.");
  }
  archive.properties["Class"] = 3;
  EXPECT_EQ(move("Archive\\\\2025", true), 50);
  EXPECT_EQ(LastBox(), "ActiveMessaging Mail Error|Bad destination folder.: {50} Bad folder name.");
  archive.properties["Class"] = 2;
  EXPECT_EQ(program.Messages(*program.inbox).items.size(), 1U);

  EXPECT_EQ(move("Archive\\\\2025", true), kBackEndSuccess);
  EXPECT_EQ(program.Messages(*program.inbox).items.size(), 1U);
  EXPECT_EQ(world.backEnd.MessageObject(), program.Messages(archive).items.back());
  EXPECT_EQ(move("Archive\\\\2025", false), kBackEndSuccess);
  EXPECT_TRUE(program.Messages(*program.inbox).items.empty());
  EXPECT_EQ(program.Messages(archive).items.size(), 2U);
  EXPECT_EQ(move("Archive\\\\2025", false), kMapiNotFound);
  EXPECT_EQ(LastBox(),
            "ActiveMessaging Mail Error|Error moving message, source message is invalid.: "
            "{-2147221233} Invalid recipients.");
}

}  // namespace
}  // namespace quillon::testing
