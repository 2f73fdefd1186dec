#include <gtest/gtest.h>

#include "backends/mapi/MapiBackEnd.h"
#include "core/WholeFile.h"
#include "support/RecordingMapi.h"
#include "support/TestWorld.h"

namespace quillon::testing {
namespace {

class LogonAnswers final : public LoginPrompt {
 public:
  Answer Ask(const LoginQuestion&, LoginFields& fields) override {
    ++questions;
    if (answer == Answer::Entered) fields = {{}, "asked", "for"};
    return answer;
  }
  Answer answer = Answer::Unavailable;
  int questions = 0;
};

using Lines = std::vector<std::string>;

class MapiBackEndTest : public ::testing::Test {
 protected:
  MapiBackEndTest() {
    world.mailSystems.Add(mapi);
    server = world.NewServer();
    server->Put(Property::mailSystem, std::int16_t{1});
    server->Put(Property::loginName, std::string("joe"));
    server->Put(Property::Password, std::string("secret"));
  }

  void Receive(int count, std::uint32_t flags = mapi::kUnread) {
    for (int i = 0; i < count; ++i) {
      MapiMessage message;
      const auto number = std::to_string(library.inbox.size() + 1);
      message.subject = "subject " + number;
      message.noteText = "text " + number;
      message.dateReceived = "2026/11/22 08:05";
      message.flags = flags;
      message.originator = {mapi::kOriginator, "Ann", "SMTP:ann@example.com", {}};
      message.recipients = {{mapi::kTo, "Joe", "SMTP:joe@example.com", {}},
                            {mapi::kCc, "Bob", {}, {}},
                            {mapi::kBcc, "Eve", {}, {}}};
      library.inbox.push_back({"id" + number, message});
    }
  }

  std::string WriteFile(const std::string& name, const std::string& text) {
    auto path = world.folder.Path(name);
    WriteWholeFile(*world.files, path,
                   {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    return path;
  }

  std::vector<std::string> FilesIn(const std::string& directory) {
    Lines names;
    for (const auto& entry : world.files->List(directory, {})) names.push_back(entry.name);
    return names;
  }

  std::int32_t Headers() { return ToInt32(server->Get(Property::messageCount)); }

  TestWorld world;
  RecordingMapi library;
  LogonAnswers prompt;
  MapiBackEnd backEnd{{library, *world.files, world.messageBox, prompt, world.configuration}};
  MapiMailSystem mapi{world.workstation, *world.files, &backEnd};
  std::unique_ptr<Server> server;
};

TEST_F(MapiBackEndTest, SendsToAllListsWithNamesAndAddressesApart) {
  const auto file = WriteFile("report.txt", "figures");
  server->AddRecipientTo("Ann Jones <ann@example.com>, bob");
  server->AddRecipientCc("eve@example.com");
  server->AddRecipientBcc("<x@example.com>");
  server->Put(Property::subject, std::string("subject \xE2\x82\xAC"));
  server->Put(Property::Message, std::string("text"));
  server->Put(Property::MessageType, std::string("IPM.Order"));
  server->Put(Property::Certify, std::int16_t{-1});
  server->AddAttachment(file);
  server->Send();
  EXPECT_EQ((Lines{"Logon 0 joe secret 0", "SendMail 1"}), library.calls);
  ASSERT_EQ(1U, library.sent.size());
  const auto& message = library.sent[0];
  ASSERT_EQ(4U, message.recipients.size());
  const auto shown = [&](std::size_t i) {
    const auto& one = message.recipients[i];
    return std::to_string(one.recipientClass) + "|" + one.name + "|" + one.address;
  };
  EXPECT_EQ("1|Ann Jones|ann@example.com", shown(0));
  EXPECT_EQ("1|bob|", shown(1));
  EXPECT_EQ("2|eve@example.com|", shown(2));
  EXPECT_EQ("3|<x@example.com>|", shown(3));
  EXPECT_EQ("subject \xE2\x82\xAC", message.subject);
  EXPECT_EQ("IPM.Order", message.messageType);
  EXPECT_EQ(mapi::kReceiptRequested, message.flags);
  ASSERT_EQ(1U, message.files.size());
  EXPECT_EQ(file, message.files[0].path);
  EXPECT_EQ("report.txt", message.files[0].name);
  EXPECT_EQ(-1, message.files[0].position);
}

TEST_F(MapiBackEndTest, NobodyInTheToListIsNoSuccess) {
  server->AddRecipientCc("bob");
  EXPECT_EQ("2000 Undetermined", FailureOf([&] { server->Send(); }));
  EXPECT_EQ(Lines{}, library.calls);
  // The mail program's own dialog can ask for one.
  server->Put(Property::NativeMailDialog, std::int16_t{-1});
  server->Put(Property::ErrorDisplay, std::int16_t{-1});
  library.failures["SendMailInDialog"] = mapi::kUserAbort;
  EXPECT_EQ("2001 The user aborted the operation.", FailureOf([&] { server->Send(); }));
  EXPECT_EQ("Logon 0 joe secret 1", library.calls[0]);
  EXPECT_EQ("SendMailInDialog 9", library.calls[1]);
  EXPECT_EQ(Lines{}, world.messageBox.shown);
}

TEST_F(MapiBackEndTest, NamesAreResolvedOnRequestAndKeepTheirList) {
  server->AddRecipientTo("ann");
  server->AddRecipientCc("bob");
  server->Put(Property::NameResolution, std::int16_t{-1});
  server->Send();
  EXPECT_EQ(
      (Lines{"Logon 0 joe secret 0", "ResolveName ann 1032", "ResolveName bob 1032", "SendMail 1"}),
      library.calls);
  EXPECT_EQ(mapi::kCc, library.sent[0].recipients[1].recipientClass);
  EXPECT_EQ("id of bob", library.sent[0].recipients[1].entryId);
  library.failures["ResolveName"] = 21;
  EXPECT_EQ("2021 Bad addressee", FailureOf([&] { server->Send(); }));
  EXPECT_EQ(1U, library.sent.size());
  library.failures.clear();
  EXPECT_EQ(Value(std::string("ann Resolved")), Value(server->ResolveName("ann")));
  EXPECT_EQ("ResolveName ann 1024", library.calls.back());
  EXPECT_EQ("ann Resolved <SMTP:ann@example.com>", server->ResolveNameEx("ann"));
  server->Put(Property::NativeMailDialog, std::int16_t{-1});
  library.failures["ResolveName"] = mapi::kUserAbort;
  EXPECT_EQ("2001 User selected cancel in ResolveName dialog.",
            FailureOf([&] { server->ResolveName("ann"); }));
}

TEST_F(MapiBackEndTest, PacksAttachmentsAndLeavesNothingBehind) {
  const auto temporary = world.folder.Path("temporary");
  ASSERT_TRUE(world.files->MakeDirectory(temporary));
  world.shared.switches.temporaryDirectory = temporary;
  server->AddRecipientTo("ann");
  server->AddAttachment(WriteFile("one.txt", "1"));
  server->AddAttachment(WriteFile("two.txt", "2"));
  server->Put(Property::attachmentEncoding, std::int16_t{64});
  server->Send();
  ASSERT_EQ(1U, library.sent[0].files.size());
  EXPECT_EQ("one.zip", library.sent[0].files[0].name);
  EXPECT_EQ(Lines{}, FilesIn(temporary));
  world.files->RemoveFile(world.folder.Path("two.txt"));
  EXPECT_EQ("534 Error while zipping files.  Is disk full?", FailureOf([&] { server->Send(); }));
  EXPECT_EQ(1U, library.sent.size());
  EXPECT_EQ(Lines{}, FilesIn(temporary));
}

TEST_F(MapiBackEndTest, HeadersUpToTheLimitWithoutTouchingTheMessages) {
  Receive(10);
  server->Put(Property::MaximumHeaders, std::int32_t{3});
  server->LoadMessageHeaders();
  EXPECT_EQ(3, Headers());
  EXPECT_EQ(
      (Lines{"Logon 0 joe secret 0", "FindNext   256", "ReadEnvelope id1 192", "FindNext  id1 256",
             "ReadEnvelope id2 192", "FindNext  id2 256", "ReadEnvelope id3 192"}),
      library.calls);
  EXPECT_EQ(mapi::kUnread, library.inbox[0].message.flags);
  server->Put(Property::messageIndex, std::int32_t{2});
  EXPECT_EQ("3|subject 3|Ann|11/22/2026 8:05:00 AM|U",
            server->GetHeaderItemString(20) + "|" + server->GetHeaderItemString(4) + "|" +
                server->GetHeaderItemString(9) + "|" + server->GetHeaderItemString(10) + "|" +
                server->GetHeaderItemString(23));
  library.inbox.clear();
  server->LoadMessageHeaders();
  EXPECT_EQ(0, Headers());
}

TEST_F(MapiBackEndTest, CountsUnreadMessagesUpToAThousand) {
  Receive(1500);
  EXPECT_EQ(Value(std::int32_t{1000}), server->Get(Property::UnreadCount));
  EXPECT_EQ(0, Headers());
  Receive(1, 0);
  library.inbox.erase(library.inbox.begin(), library.inbox.begin() + 1498);
  EXPECT_EQ(Value(std::int32_t{2}), server->Get(Property::UnreadCount));
}

TEST_F(MapiBackEndTest, WhatWasReadBeforeAFailureStays) {
  Receive(5);
  library.failuresAt[5] = 23;  // the third FindNext
  EXPECT_EQ("2023 Network failure", FailureOf([&] { server->LoadMessageHeaders(); }));
  EXPECT_EQ(2, Headers());
  // A load that never began leaves them.
  server->Logout();
  library.failures["Logon"] = 3;
  server->Put(Property::ErrorDisplay, std::int16_t{-1});
  EXPECT_EQ("2003 Login failed", FailureOf([&] { server->LoadMessageHeaders(); }));
  EXPECT_EQ(2, Headers());
  EXPECT_EQ(Lines{"MAPI Mail Error|Failed to Logon to mail system (MAPILogon): {3} Login failed"},
            world.messageBox.shown);
}

TEST_F(MapiBackEndTest, LoadsAMessageWithItsFiles) {
  Receive(1);
  const auto directory = world.folder.Path("received");
  ASSERT_TRUE(world.files->MakeDirectory(directory));
  server->Put(Property::AttachmentDirectory, directory);
  const auto load = [&] {
    library.inbox[0].message.files = {{0, -1, WriteFile("tmp1", "one"), "report.txt"},
                                      {0, -1, WriteFile("tmp2", "two"), {}}};
    server->LoadMessage();
  };
  server->LoadMessageHeaders();
  server->Put(Property::peekOnly, std::int16_t{-1});
  load();
  EXPECT_EQ(mapi::kUnread, library.inbox[0].message.flags);
  EXPECT_EQ("ReadMail id1 128", library.calls.back());
  EXPECT_EQ("report.txt, tmp2", server->GetMessageItemString(7));
  EXPECT_EQ((Lines{"report.txt", "tmp2.TMP"}), FilesIn(directory));
  EXPECT_FALSE(world.files->FileExists(world.folder.Path("tmp1")));
  EXPECT_EQ("Joe <SMTP:joe@example.com>|Bob|Eve|subject 1|text 1",
            server->GetMessageItemString(1) + "|" + server->GetMessageItemString(2) + "|" +
                server->GetMessageItemString(3) + "|" + server->GetMessageItemString(4) + "|" +
                server->GetMessageItemString(5));
  server->Put(Property::peekOnly, std::int16_t{0});
  server->Put(Property::suppressAttachments, std::int16_t{-1});
  load();
  EXPECT_EQ("ReadMail id1 2048", library.calls.back());
  EXPECT_EQ(0U, library.inbox[0].message.flags);
  EXPECT_EQ(0, server->GetMessageItemCount(6));
  EXPECT_EQ(2U, FilesIn(directory).size());
}

TEST_F(MapiBackEndTest, AFileThatCannotBeCopiedLeavesTheMessageBefore) {
  Receive(1);
  const auto directory = world.folder.Path("received");
  ASSERT_TRUE(world.files->MakeDirectory(directory));
  server->Put(Property::AttachmentDirectory, directory);
  server->LoadMessageHeaders();
  server->Put(Property::subject, std::string("before"));
  const auto kept = WriteFile("tmp1", "one");
  library.inbox[0].message.files = {{0, -1, kept, "a.txt"},
                                    {0, -1, world.folder.Path("gone"), "b.txt"}};
  EXPECT_EQ("2013 Could not write attached file", FailureOf([&] { server->LoadMessage(); }));
  EXPECT_EQ("before", server->GetMessageItemString(4));
  EXPECT_EQ(Lines{}, FilesIn(directory));
  EXPECT_FALSE(world.files->FileExists(kept));
}

TEST_F(MapiBackEndTest, HeadersOfAnotherMailSystemAreRefused) {
  Receive(1);
  server->LoadMessageHeaders();
  world.shared.headerOrigin.mailbox = "joe@MAIL.EXAMPLE.COM";
  EXPECT_EQ("532 No valid message headers have been loaded.",
            FailureOf([&] { server->DeleteMessage(); }));
  EXPECT_EQ(1U, library.inbox.size());
  server->LoadMessageHeaders();
  server->DeleteMessage();
  EXPECT_EQ(0U, library.inbox.size());
}

TEST_F(MapiBackEndTest, LogsOnOnceAndOffOnce) {
  server->Login();
  server->Login();
  EXPECT_EQ(Value(std::int32_t{41}), server->Get(Property::sessionHandle));
  // The handle stays with its family.
  server->Put(Property::mailSystem, std::int16_t{10});
  EXPECT_EQ(Value(std::int32_t{0}), server->Get(Property::sessionHandle));
  server->Put(Property::mailSystem, std::int16_t{5});
  EXPECT_EQ(Value(std::int32_t{41}), server->Get(Property::sessionHandle));
  library.failures["Logoff"] = 2;
  EXPECT_EQ("2002 Undetermined", FailureOf([&] { server->Logout(); }));
  library.failures.clear();
  server->Logout();
  server->Logout();
  EXPECT_EQ((Lines{"Logon", "Logoff", "Logoff"}), library.Names());
  // What is still open ends with the last object, also the session of one that has gone before.
  auto other = world.NewServer();
  other->Put(Property::mailSystem, std::int16_t{1});
  other->Put(Property::loginName, std::string("ann"));
  other->Put(Property::Password, std::string("x"));
  other->Login();
  server->Login();
  EXPECT_EQ(2U, library.open.size());
  other.reset();
  EXPECT_EQ(2U, library.open.size());
  server.reset();
  EXPECT_EQ(0U, library.open.size());
}

TEST_F(MapiBackEndTest, ASessionOfTheClientIsUsedAndNeverEnded) {
  library.open = {7};
  server->Put(Property::SessionHandleEx, std::int32_t{7});
  Receive(1);
  server->LoadMessageHeaders();
  EXPECT_EQ(1, Headers());
  server->Logout();
  EXPECT_EQ(Value(std::int32_t{0}), server->Get(Property::sessionHandle));
  server->Put(Property::SessionHandleEx, std::int32_t{7});
  server.reset();
  EXPECT_EQ((Lines{"FindNext", "ReadEnvelope", "FindNext"}), library.Names());
  EXPECT_EQ(1U, library.open.size());
}

TEST_F(MapiBackEndTest, AsksForWhatIsMissing) {
  server->Put(Property::Password, std::string());
  EXPECT_EQ("544 Insufficient login information.", FailureOf([&] { server->Login(); }));
  prompt.answer = LoginPrompt::Answer::Cancelled;
  EXPECT_EQ("522 User selected cancel in dialog.", FailureOf([&] { server->Login(); }));
  EXPECT_EQ(Lines{}, library.calls);
  prompt.answer = LoginPrompt::Answer::Entered;
  server->Login();
  EXPECT_EQ(Lines{"Logon 0 asked for 0"}, library.calls);
  server->Logout();
  // Without the dialog the mail program has its say; its own dialog is for native dialogs only.
  server->Put(Property::LoginDialog, std::int16_t{0});
  server->Put(Property::Password, std::string());
  server->Put(Property::forceDownload, std::int16_t{-1});
  server->Login();
  EXPECT_EQ("Logon 0 asked  4096", library.calls.back());
  server->Logout();
  world.configuration.WriteTrueFalse("MAPI", "NewSession", true);
  server->Put(Property::NativeMailDialog, std::int16_t{-1});
  server->Put(Property::hWND, std::int32_t{99});
  server->Login();
  EXPECT_EQ("Logon 99 asked  4098", library.calls.back());
  EXPECT_EQ(3, prompt.questions);
}

TEST_F(MapiBackEndTest, TheOldLibraryIsKnownByItsSize) {
  EXPECT_EQ("", server->GetInterfaceString(43));
  world.workstation.windows = world.folder.Path();
  ASSERT_TRUE(world.files->MakeDirectory(world.folder.Path("system")));
  ASSERT_TRUE(world.files->MakeDirectory(world.folder.Path("SYSTEM32")));
  const std::map<std::size_t, const char*> kKinds{
      {19000, "1"}, {20000, "1"}, {98500, "2"},  {54300, "3"},  {54500, "3"}, {54299, "4"},
      {54000, "4"}, {53999, "6"}, {400000, "6"}, {400001, "5"}, {0, "6"}};
  for (const auto& [bytes, kind] : kKinds) {
    WriteFile("system/MAPI.DLL", std::string(bytes, 'x'));
    EXPECT_EQ(kind, server->GetInterfaceString(43)) << bytes;
  }
  WriteFile("SYSTEM32/MAPI.DLL", std::string(19500, 'x'));
  EXPECT_EQ("1", server->GetInterfaceString(43));
  server->Put(Property::mailSystem, std::int16_t{9});
  EXPECT_EQ("", server->GetInterfaceString(43));
}

// Each number of each call, at each step.
TEST_F(MapiBackEndTest, EveryFailureReachesTheClientAndLeavesNothing) {
  Receive(2);
  const auto directory = world.folder.Path("received");
  ASSERT_TRUE(world.files->MakeDirectory(directory));
  server->Put(Property::AttachmentDirectory, directory);
  server->Put(Property::NameResolution, std::int16_t{-1});
  server->AddRecipientTo("ann");
  const auto round = [&] {
    library.inbox[0].message.files = {{0, -1, WriteFile("tmp1", "one"), "report.txt"}};
    server->Send();
    server->LoadMessageHeaders();
    server->LoadMessage();
    server->ResolveName("ann");
    server->DeleteMessage();
    server->Logout();
  };
  round();
  const auto names = library.Names();
  for (std::size_t step = 0; step < names.size(); ++step) {
    for (std::uint32_t number = 1; number <= 26; ++number) {
      library.calls.clear();
      library.inbox.clear();
      library.sent.clear();
      library.failuresAt = {{step, number}};
      Receive(2);
      server->NewMessage();
      server->AddRecipientTo("ann");
      const bool ends = names[step] == "FindNext" && number == mapi::kNoMessages;
      const auto failure = FailureOf(round);
      if (!ends) {
        EXPECT_EQ(std::to_string(2000 + number), failure.substr(0, 4)) << names[step];
        EXPECT_EQ(step + 1, library.calls.size()) << names[step];
      }
      library.failuresAt.clear();
      server->Logout();
      EXPECT_TRUE(library.open.empty()) << names[step] << " " << number;
      for (const auto& name : FilesIn(directory)) {
        world.files->RemoveFile(directory + "/" + name);
      }
    }
  }
}

}  // namespace
}  // namespace quillon::testing
