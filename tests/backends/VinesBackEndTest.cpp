#include <gtest/gtest.h>
#include <tuple>

#include "backends/vines/VinesBackEnd.h"
#include "backends/vines/VinesMailSystem.h"
#include "core/WholeFile.h"
#include "mail/AddressBooks.h"
#include "support/RecordingProvider.h"
#include "support/TestWorld.h"

namespace quillon::testing {
namespace {

using Calls = std::vector<std::string>;

class VinesBackEndTest : public ::testing::Test {
 protected:
  VinesBackEndTest() {
    world.mailSystems.Add(vines);
    world.configuration.WriteString("VINES", "Provider", "mail.dll");
    server = world.NewServer();
    server->Put(Property::mailSystem, std::int16_t{20});
    server->Put(Property::loginName, std::string("joe"));
    server->Put(Property::Password, std::string("secret"));
    server->Put(Property::postOffice, std::string("office"));
    received = world.folder.Path("received");
    world.files->MakeDirectory(received);
    server->Put(Property::AttachmentDirectory, received);
  }

  void Receive(int count) {
    for (int i = 0; i < count; ++i) {
      const auto number = std::to_string(library.inbox.size() + 1);
      RecordingProvider::Entry entry;
      entry.header.id = "id\xFF" + number;
      entry.header.subject = "subject " + number;
      entry.header.from = {0, "Ann", "ann@example"};
      entry.header.to = "Joe, Bob";
      entry.header.date = {.year = 2026, .month = 11, .day = 22, .hour = 8, .minute = 5};
      entry.header.dateText = "22.11.26";
      entry.header.unread = true;
      entry.header.bytes = 77;
      entry.header.importance = 1;
      entry.message.subject = entry.header.subject;
      entry.message.text = "text " + number;
      entry.message.from = entry.header.from;
      entry.message.date = entry.header.date;
      entry.message.recipients = {{provider::kTo, "Joe", "joe@example"},
                                  {provider::kCc, "Bob", {}},
                                  {provider::kBcc, {}, "eve@example"}};
      library.inbox.push_back(std::move(entry));
    }
  }

  std::size_t FilesReceived() { return world.files->List(received, {}).size(); }

  TestWorld world;
  RecordingProvider library;
  NoLoginPrompt prompt;
  VinesLibrary vinesLibrary{library, world.configuration};
  VinesBackEnd backEnd{{vinesLibrary, *world.files, world.messageBox, prompt}};
  VinesMailSystem vines{vinesLibrary, &backEnd};
  std::unique_ptr<Server> server;
  std::string received;
};

TEST_F(VinesBackEndTest, IsFoundFirstWhereTheConfigurationNamesALibraryThatFits) {
  const auto found = [&] {
    const auto other = world.NewServer();
    other->SetNativeSystem();
    return std::pair(other->QueryMailSystem(20), ToInt32(other->Get(Property::mailSystem)));
  };
  EXPECT_EQ(std::pair(kTrue, std::int32_t{20}), found());
  library.failures["Load"] = provider::kOtherVersion;
  EXPECT_EQ(std::pair(kFalse, std::int32_t{0}), found());
  EXPECT_EQ("3991 The provider library does not fit this version.",
            FailureOf([&] { server->Login(); }));
  library.failures.clear();
  world.configuration.Remove("VINES", "Provider");
  EXPECT_EQ(std::pair(kFalse, std::int32_t{0}), found());
  EXPECT_EQ("3990 The provider library was not found, or cannot be loaded.",
            FailureOf([&] { server->Login(); }));
}

TEST_F(VinesBackEndTest, LogsInOnceForEachServerAndOutOfWhatItHasBegun) {
  server->Put(Property::hWND, std::int32_t{99});
  server->Put(Property::forceDownload, std::int16_t{-1});
  server->Login();
  server->Login();
  EXPECT_EQ((Calls{"Login 99 joe secret office download"}), library.calls);
  auto other = world.NewServer();
  other->Put(Property::mailSystem, std::int16_t{20});
  EXPECT_EQ("544 Insufficient login information.", FailureOf([&] { other->Login(); }));
  other->Put(Property::NativeMailDialog, std::int16_t{-1});
  other->Login();
  EXPECT_EQ("Login 99    dialog", library.calls.back());
  server->Logout();
  EXPECT_EQ("Logout 41", library.calls.back());
  EXPECT_EQ(Value(std::int32_t{0}), server->Get(Property::sessionHandle));
  server->Logout();
  library.calls.clear();
  // A session of a client is his, also when all objects have gone.
  server->Put(Property::SessionHandleEx, std::int32_t{7});
  library.failures["SetSession"] = 3001;
  EXPECT_EQ("529 Could not set session handle.",
            FailureOf([&] { server->Put(Property::SessionHandleEx, std::int32_t{8}); }));
  library.failures.clear();
  server->LoadMessageHeaders();
  EXPECT_EQ((Calls{"SetSession 7", "SetSession 8", "List 7 / 1000 sorted"}), library.calls);
  server->Logout();
  server.reset();
  other.reset();
  EXPECT_EQ("Logout 42", library.calls.back());
  EXPECT_EQ(4U, library.calls.size());
}

TEST_F(VinesBackEndTest, ASessionMayGetAnotherNumberOrEnd) {
  server->Login();
  library.failures["GetSession"] = provider::kNotSupported;
  EXPECT_EQ(Value(std::int32_t{41}), server->Get(Property::sessionHandle));
  library.failures.clear();
  library.renumbered = {{41, 51}, {51, 0}};
  EXPECT_EQ(Value(std::int32_t{51}), server->Get(Property::sessionHandle));
  server->LoadMessageHeaders();
  EXPECT_EQ("List 51 / 1000 sorted", library.calls.back());
  EXPECT_EQ(Value(std::int32_t{0}), server->Get(Property::sessionHandle));
  server->LoadMessageHeaders();
  EXPECT_EQ("List 42 / 1000 sorted", library.calls.back());
  library.calls.clear();
  server.reset();
  EXPECT_EQ(Calls{"Logout 42"}, library.calls);
}

TEST_F(VinesBackEndTest, SendsAllThatAMessageHas) {
  const auto file = world.folder.Path("report.txt");
  ASSERT_TRUE(WriteWholeFile(*world.files, file, {}));
  server->AddRecipientTo("Ann Jones <ann@example>, bob");
  server->AddRecipientCc("eve@example");
  server->AddRecipientBcc("Dan <dan>");
  server->Put(Property::from, std::string("Joe <joe@example>"));
  server->Put(Property::subject, std::string("subject \xE2\x82\xAC"));
  server->Put(Property::Message, std::string("a\0b", 3));
  server->Put(Property::Certify, std::int16_t{-1});
  server->Put(Property::Importance, std::int16_t{1});
  server->AddAttachment(file);
  server->Send();
  ASSERT_EQ(1U, library.sent.size());
  const auto& message = library.sent[0];
  std::vector<std::tuple<std::int32_t, std::string, std::string>> recipients;
  for (const auto& one : message.recipients) {
    recipients.emplace_back(one.kind, one.name, one.address);
  }
  EXPECT_EQ((decltype(recipients){{1, "Ann Jones", "ann@example"},
                                  {1, "bob", ""},
                                  {2, "eve@example", ""},
                                  {3, "Dan", "dan"}}),
            recipients);
  EXPECT_EQ("joe@example", message.from.address);
  EXPECT_EQ("subject \xE2\x82\xAC", message.subject);
  EXPECT_EQ(std::string("a\0b", 3), message.text);
  EXPECT_TRUE(message.receipt);
  EXPECT_EQ(1, message.importance);
  ASSERT_EQ(1U, message.files.size());
  EXPECT_EQ(file, message.files[0].path);
  EXPECT_EQ("report.txt", message.files[0].name);
}

TEST_F(VinesBackEndTest, HeadersOfAFolderUpToTheLimit) {
  Receive(5);
  library.inbox[1].header.unread = false;
  library.inbox[2].header.date.month = 13;
  server->Put(Property::MaximumHeaders, std::int32_t{3});
  server->Put(Property::unreadOnly, std::int16_t{-1});
  server->Put(Property::dateSort, std::int16_t{0});
  server->Put(Property::Folder, std::string("Team\\\\Old"));
  server->LoadMessageHeaders();
  EXPECT_EQ("List 41 /Team/Old/ 3 unread", library.calls.back());
  const auto item = [&](std::int16_t type) { return server->GetHeaderItemString(type); };
  EXPECT_EQ(
      "1|id\xFF"
      "1|subject 1|Ann|ann@example|11/22/2026 8:05:00 AM|U|1|77|Joe, Bob",
      item(20) + "|" + item(22) + "|" + item(4) + "|" + item(9) + "|" + item(24) + "|" + item(10) +
          "|" + item(23) + "|" + item(25) + "|" + item(26) + "|" + item(1));
  // The library passed a read message all the same, and a date that is none.
  server->Put(Property::messageIndex, std::int32_t{1});
  EXPECT_EQ("subject 3|22.11.26", item(4) + "|" + item(10));
  EXPECT_EQ(Value(std::int32_t{3}), server->Get(Property::messageCount));
  server->Put(Property::dateFormat, std::string("NATIVE"));
  server->Put(Property::messageIndex, std::int32_t{0});
  library.failures["List"] = 3001;
  EXPECT_EQ("3001 Nobody of that name.", FailureOf([&] { server->LoadMessageHeaders(); }));
  EXPECT_EQ("22.11.26", item(10));  // what had come before
  library.failures.clear();
  library.unread = 12;
  EXPECT_EQ(Value(std::int32_t{12}), server->Get(Property::UnreadCount));
  EXPECT_EQ("UnreadCount /Team/Old/", library.calls.back());
  server->Put(Property::Folder, std::string("Team\\\\\\\\Old"));
  EXPECT_EQ("529 Invalid folder.", FailureOf([&] { server->LoadMessageHeaders(); }));
}

TEST_F(VinesBackEndTest, LoadsAMessageAndLeavesNothingOfOneThatFails) {
  Receive(1);
  library.inbox[0].files = {"..\\one.txt", "two.txt"};
  server->LoadMessageHeaders();
  server->Put(Property::peekOnly, std::int16_t{-1});
  server->LoadMessage();
  EXPECT_EQ(
      "Read id\xFF"
      "1 peek",
      library.calls.back());
  EXPECT_EQ(2U, FilesReceived());
  EXPECT_EQ(received, library.paths[0].substr(0, received.size()));
  const auto item = [&](std::int16_t type) { return server->GetMessageItemString(type); };
  EXPECT_EQ(
      "Joe <joe@example>|Bob|eve@example|subject 1|text 1|one.txt, two.txt",
      item(1) + "|" + item(2) + "|" + item(3) + "|" + item(4) + "|" + item(5) + "|" + item(7));
  library.failures["Read"] = 3001;
  server->Put(Property::subject, std::string("before"));
  EXPECT_EQ("3001 Nobody of that name.", FailureOf([&] { server->LoadMessage(); }));
  EXPECT_EQ(2U, FilesReceived());
  EXPECT_EQ("before", item(4));
  library.failures.clear();
  const auto gone = world.folder.Path("gone");
  world.files->MakeDirectory(gone);
  server->Put(Property::AttachmentDirectory, gone);
  world.files->RemoveEmptyDirectory(gone);
  EXPECT_EQ("3994 Could not write attached file.", FailureOf([&] { server->LoadMessage(); }));
  server->Put(Property::suppressAttachments, std::int16_t{-1});
  server->LoadMessage();
  EXPECT_EQ(0, server->GetMessageItemCount(6));
}

TEST_F(VinesBackEndTest, DeletesAndMovesTheMessageOfItsOwnHeaders) {
  EXPECT_EQ("532 No valid message headers have been loaded.",
            FailureOf([&] { server->MoveMessage("Old"); }));
  Receive(2);
  server->LoadMessageHeaders();
  server->Put(Property::messageIndex, std::int32_t{1});
  server->MoveMessage("Team\\Old");
  server->DeleteMessage();
  EXPECT_EQ(
      "Move id\xFF"
      "2 /Team/Old/",
      *(library.calls.end() - 2));
  EXPECT_EQ(
      "Delete id\xFF"
      "2",
      library.calls.back());
  EXPECT_EQ("530 Operation not supported by this mail system.",
            FailureOf([&] { server->CopyMessage("Old"); }));
  world.shared.headerOrigin.mailbox = "MAPI JOE";
  EXPECT_EQ("532 No valid message headers have been loaded.",
            FailureOf([&] { server->DeleteMessage(); }));
}

// Each number that a library can return, at the call of each member.
TEST_F(VinesBackEndTest, NumbersReachTheClientAsTheyAre) {
  const struct {
    std::int32_t number;
    const char* failure;
  } cases[] = {{3001, "3001 Nobody of that name."},
               {3999, "3999 Undetermined"},
               {provider::kCancelled, "522 The user aborted the operation."},
               {provider::kNotSupported, "530 Operation not supported by this mail system."},
               {provider::kBroken, "3992 The provider library failed."},
               {-1, "3993 The provider library gave data that cannot be."},
               {200000, "0 Undetermined"},
               {7, "7 Undetermined"}};
  Receive(1);
  server->AddRecipientTo("ann");
  server->LoadMessageHeaders();
  const std::map<std::string, std::function<void()>> members{
      {"Login", [&] { server->Logout(), server->Login(); }},
      {"Send", [&] { server->Send(); }},
      {"List", [&] { server->LoadMessageHeaders(); }},
      {"Read", [&] { server->LoadMessage(); }},
      {"Delete", [&] { server->DeleteMessage(); }},
      {"Move", [&] { server->MoveMessage("Old"); }},
      {"UnreadCount", [&] { server->Get(Property::UnreadCount); }},
      {"Logout", [&] { server->Login(), server->Logout(); }}};
  for (const auto& [call, member] : members) {
    for (const auto& [number, failure] : cases) {
      library.failures = {{call, number}};
      EXPECT_EQ(failure, FailureOf(member)) << call;
    }
  }
  library.failures = {{"Send", 3001}};
  server->Put(Property::ErrorDisplay, std::int16_t{-1});
  FailureOf([&] { server->Send(); });
  EXPECT_EQ((Calls{"VINES Mail Error|Error sending mail (Send): {3001} Nobody of that name."}),
            world.messageBox.shown);
  const auto decoded = server->DecodeError(static_cast<std::int32_t>(0x80040000U + 3001));
  EXPECT_EQ(20, decoded.mailSystem);
  EXPECT_EQ("Nobody of that name.", decoded.message);
}

class VinesAddressBookTest : public VinesBackEndTest {
 protected:
  std::string With(const Server::AddressBookCall& call) {
    return FailureOf([&] { server->WithAddressBooks("Name", MemberKind::Property, call); });
  }
  std::string Open(const std::string& name) {
    return With(
        [&](AddressBooks& books, MailRequest& request) { return books.Open(request, name, book); });
  }
  // How many there are then, or what has failed.
  std::string Fetch() {
    const auto failure = With(
        [&](AddressBooks&, MailRequest& request) { return book->Fetch(request, entries, more); });
    return failure.empty() ? std::to_string(entries.size()) + (more ? " and more" : "") : failure;
  }
  std::string Show() {
    return With(
        [&](AddressBooks& books, MailRequest& request) { return books.Show(request, choice); });
  }

  std::unique_ptr<OpenAddressBook> book;
  std::vector<AddressEntry> entries;
  AddressChoice choice;
  bool more = true;
};

TEST_F(VinesAddressBookTest, EntriesComeInParts) {
  for (int i = 0; i < 60; ++i) library.people.push_back({"p" + std::to_string(i), "a", i == 59});
  Calls names;
  EXPECT_EQ("", With([&](AddressBooks& books, MailRequest& request) {
              return books.Names(request, names);
            }));
  EXPECT_EQ((Calls{"People", "Lists"}), names);
  EXPECT_EQ("529 Address book does not exist.", Open("None"));
  EXPECT_EQ("", Open("lists"));
  EXPECT_EQ("50 and more", Fetch());
  library.failures = {{"Entries", 3001}};
  EXPECT_EQ("3001 Nobody of that name.", Fetch());
  library.failures.clear();
  EXPECT_EQ("60 and more", Fetch());
  EXPECT_EQ("60", Fetch());
  EXPECT_EQ("Entries Lists 60", library.calls.back());
  EXPECT_EQ("p0p59", entries[0].name + entries[59].name);
  EXPECT_TRUE(!entries[0].isGroup && entries[59].isGroup);
  for (const bool again : {false, true}) {
    Open("");
    server->Logout();
    if (again) server->Login();
    EXPECT_EQ("751 The Address Book is not open.", Fetch());
  }
}

TEST_F(VinesAddressBookTest, WhatTheLibraryHasNot) {
  const std::string kNoFunction = "754 Address Book function not supported for this mail system.";
  library.failures = {{"Books", provider::kNotSupported}};
  EXPECT_EQ(kNoFunction, Open(""));
  library.hasWindow = false;
  EXPECT_EQ(kNoFunction, Show());
  library.hasBooks = false;
  EXPECT_EQ("753 No Address Book support for this mail system.", Open(""));
  library.failures = {{"Load", provider::kMissing}};
  server->Logout();
  EXPECT_EQ("3990 The provider library was not found, or cannot be loaded.", Open(""));
}

TEST_F(VinesAddressBookTest, TheWindowBeginsAndEndsWithWhoIsChosen) {
  choice = {{{"ann", {}}}, {{"bob", {}}}, {{"eve", {}}}};
  library.chosen = {{provider::kBcc, "Joe", "joe@x"}, {provider::kTo, "Max", {}}};
  EXPECT_EQ("", Show());
  EXPECT_EQ("ChooseAddresses 0 1ann 2bob 3eve", library.calls.back());
  EXPECT_TRUE(choice.cc.empty());
  EXPECT_EQ("Max|Joe|joe@x",
            choice.to.at(0).name + "|" + choice.bcc.at(0).name + "|" + choice.bcc.at(0).address);
  library.failures = {{"ChooseAddresses", provider::kCancelled}};
  EXPECT_EQ("522 User selected cancel in dialog.", Show());
  library.failures.clear();
  library.chosen = {{0, "Joe", {}}};
  EXPECT_EQ("3993 The provider library gave data that cannot be.", Show());
  EXPECT_EQ("Max", choice.to.at(0).name);
}

}  // namespace
}  // namespace quillon::testing
