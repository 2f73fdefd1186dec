#include <gtest/gtest.h>
#include <optional>

#include "backends/vim/VimBackEnd.h"
#include "core/WholeFile.h"
#include "mail/AddressBooks.h"
#include "support/RecordingVim.h"
#include "support/TestWorld.h"

namespace quillon::testing {
namespace {

class VimLoginAnswers final : public LoginPrompt {
 public:
  Answer Ask(const LoginQuestion& question, LoginFields& fields) override {
    questions.push_back(question.caption + "|" + fields.name);
    if (answer == Answer::Entered) fields = {postOffice.value_or(fields.server), "asked", "for"};
    return answer;
  }
  Answer answer = Answer::Unavailable;
  std::optional<std::string> postOffice;  // where the user changes it
  std::vector<std::string> questions;
};

class EasternClock final : public LocalClock {
 public:
  LocalTime Now() const override { return {2026, 11, 22, 0, 18, 0, 0, 60}; }
};

using Lines = std::vector<std::string>;

class VimBackEndTest : public ::testing::Test {
 protected:
  VimBackEndTest() {
    world.mailSystems.Add(vim);
    world.workstation.libraries = {"vim32.dll"};
    server = NewServer();
  }

  std::unique_ptr<Server> NewServer() {
    auto made = world.NewServer();
    made->Put(Property::mailSystem, std::int16_t{2});
    return made;
  }

  RecordingVim::Message& Receive(const VimDate& date = {2026, 11, 22, 8, 5, 0, false}) {
    const auto number = static_cast<std::uint32_t>(library.mailbox.size() + 1);
    RecordingVim::Message message;
    message.envelope = {{number, 0xFFFFFFFE}, date, "Ann", "subject " + std::to_string(number)};
    message.header = {date, "Ann", message.envelope.subject, 2, true};
    message.items = {{vim::kNotePart, "VIM_TEXT", {}, "text "},
                     {vim::kNotePart, "VIM_FAX", {}, "picture"},
                     {vim::kNotePart, "vim_text", {}, "and more"},
                     {vim::kAttach, {}, "report.txt", "one"},
                     {vim::kAttach, {}, "..\\..\\x:\\evil.txt", "two"},
                     {vim::kAttach, {}, {}, "three"}};
    message.recipients = {{vim::kTo, {"Joe", "joe at HQ"}},
                          {vim::kTo, {"Ann", {}}},
                          {vim::kTo, {{}, "eve at HQ"}},
                          {vim::kCc, {"Bob", {}}},
                          {vim::kBcc, {"Eve", {}}}};
    library.mailbox.push_back(message);
    return library.mailbox.back();
  }

  std::string WriteFile(const std::string& name, const std::string& text) {
    auto path = world.folder.Path(name);
    WriteWholeFile(*world.files, path, BytesOf(text));
    return path;
  }

  // The directory where attachments go.
  std::string ReceiveInto(const std::string& name) {
    auto directory = world.folder.Path(name);
    EXPECT_TRUE(world.files->MakeDirectory(directory));
    server->Put(Property::AttachmentDirectory, directory);
    return directory;
  }
  Lines FilesIn(const std::string& directory) {
    Lines names;
    for (const auto& entry : world.files->List(directory, {})) names.push_back(entry.name);
    std::sort(names.begin(), names.end());
    return names;
  }

  // One item of every header.
  std::string Column(std::int16_t item) {
    std::string texts;
    const auto count = ToInt32(server->Get(Property::messageCount));
    for (std::int32_t index = 0; index < count; ++index) {
      server->Put(Property::messageIndex, index);
      texts += (index == 0 ? "" : "; ") + server->GetHeaderItemString(item);
    }
    return texts;
  }

  TestWorld world;
  RecordingVim library{*world.files};
  VimLoginAnswers prompt;
  EasternClock clock;
  VimBackEnd backEnd{{library, world.workstation, *world.files, clock, world.messageBox, prompt}};
  VimMailSystem vim{world.workstation, &backEnd};
  std::unique_ptr<Server> server;
};

TEST_F(VimBackEndTest, SendsStepByStep) {
  server->AddRecipientTo("Ann Jones <ann at HQ>, bob");
  server->AddRecipientCc("eve");
  server->AddRecipientBcc("max");
  server->Put(Property::subject, std::string("subject"));
  server->Put(Property::Message, std::string("text"));
  server->AddAttachment(WriteFile("report.txt", "figures"));
  server->Send();
  EXPECT_EQ((Lines{"Initialize", "GetDefaultSessionInfo", "QueryCapability 72", "OpenSession",
                   "CreateMessage VIM_MAIL", "SetMessageRecipient 97", "SetMessageRecipient 97",
                   "SetMessageRecipient 10", "SetMessageRecipient 9", "SetMessageHeaderText 91",
                   "SetMessageHeaderFlag 81", "SetMessageHeaderFlag 21", "SetMessageHeaderFlag 60",
                   "SetMessageHeaderFlag 79", "SetMessageItemText 62", "SetMessageItemFile 6",
                   "SendMessage"}),
            library.calls);
  EXPECT_EQ((Lines{"97 Ann Jones|ann at HQ", "97 bob|", "10 eve|", "9 max|", "91 subject", "81 yes",
                   "21 no", "60 no", "79 no", "62 text", "6 report.txt|figures"}),
            library.sent[0]);
}

TEST_F(VimBackEndTest, OptionsOfAMessage) {
  server->AddRecipientCc("eve");
  server->Put(Property::Certify, std::int16_t{-1});
  const auto settings = [&](std::int16_t report, std::int16_t importance) {
    server->Put(Property::DeliveryReport, report);
    server->Put(Property::Importance, importance);
    server->Send();
    std::string options;
    for (const auto& line : library.sent.back()) {
      if (line.ends_with(" yes") || line.starts_with("71")) options += line + ";";
    }
    return options;
  };
  EXPECT_EQ("81 yes;60 yes;79 yes;71 2;", settings(1, 2));
  EXPECT_EQ("81 yes;21 yes;60 yes;79 yes;71 0;", settings(2, 4));
  EXPECT_EQ("81 yes;21 yes;60 yes;79 yes;71 0;", settings(3, 5));
  EXPECT_EQ("81 yes;79 yes;", settings(0, 3));
}

TEST_F(VimBackEndTest, APostNeedsTextAndNobody) {
  EXPECT_EQ("551 Data needed for this operation was not provided.",
            FailureOf([&] { server->Post(); }));
  EXPECT_EQ(Lines{}, library.calls);
  server->Put(Property::subject, std::string("subject"));
  server->Post();
  EXPECT_EQ("91 subject", library.sent.at(0).at(0));
}

TEST_F(VimBackEndTest, AMessageThatIsAbandonedIsClosedOnce) {
  server->AddRecipientTo("Ann <ann at HQ>");
  server->AddAttachment(WriteFile("report.txt", "figures"));
  const auto failing = [&](const char* call, std::uint32_t product) {
    library.calls.clear();
    library.product = product;
    library.failures = {{call, 14}};
    auto failure = FailureOf([&] { server->Send(); });
    library.failures.clear();
    server->Logout();
    EXPECT_TRUE(library.open.empty()) << call;
    const bool closes = std::count(library.calls.begin(), library.calls.end(), "CloseMessage") == 1;
    return failure + (closes ? " closed" : "");
  };
  const auto product = vim::kCcMail;
  EXPECT_EQ("4014 Error creating message (VIMCreateMessage)", failing("CreateMessage", product));
  EXPECT_EQ("4014 Bad address=Ann <ann at HQ> (VIMSetMessageRecipient) closed",
            failing("SetMessageRecipient", product));
  EXPECT_EQ("4014 Error sending mail (VIMSetMessageHeader - Subject) closed",
            failing("SetMessageHeaderText", product));
  for (const auto* const flag : {"81", "21", "60", "79"}) {
    EXPECT_EQ("4014 Error sending mail (VIMSetMessageHeader - Certify) closed",
              failing((std::string("SetMessageHeaderFlag ") + flag).c_str(), product));
  }
  EXPECT_EQ("4014 Error sending mail (VIMSetMessageItem - Message) closed",
            failing("SetMessageItemText", product));
  EXPECT_EQ("4014 Error sending mail (VIMSetMessageItem - Attachment report.txt) closed",
            failing("SetMessageItemFile", product));
  EXPECT_EQ("4014 Error sending mail (VIMSendMail)", failing("SendMessage", product));
  EXPECT_EQ("4014 Error sending mail (SMISendDocuments)", failing("SendMessage", vim::kNotes));
  server->ClearMessageItems(6);
  EXPECT_EQ("4014 Error sending mail (SMIAddressAndSend)", failing("SendMessage", vim::kNotes));
  EXPECT_TRUE(library.sent.empty());
}

TEST_F(VimBackEndTest, LogsInWithDataOnlyWhereNothingCanBeShared) {
  library.hasSession = false;
  library.defaults = {"M:\\DATA", "ann", {}};
  server->Put(Property::LoginDialog, std::int16_t{0});
  EXPECT_EQ("544 Insufficient login information.", FailureOf([&] { server->Login(); }));
  server->Put(Property::Password, std::string("secret"));
  server->Login();
  EXPECT_EQ("OpenSession M:\\DATA|ann|secret", library.calls.back());
  server->Logout();
  server->Put(Property::loginName, std::string("joe"));
  server->Put(Property::postOffice, world.folder.Path());
  server->Login();
  EXPECT_EQ("OpenSession " + world.folder.Path() + "|joe|secret", library.calls.back());
  EXPECT_EQ(1, std::count(library.calls.begin(), library.calls.end(), "Initialize"));
  server->Logout();
  server->Put(Property::loginName, std::string());
  server->Put(Property::Password, std::string());
  server->Put(Property::LoginDialog, std::int16_t{-1});
  prompt.answer = LoginPrompt::Answer::Cancelled;
  EXPECT_EQ("522 User selected cancel in dialog.", FailureOf([&] { server->Login(); }));
  EXPECT_EQ(Value(std::string()), server->Get(Property::loginName));
  prompt.answer = LoginPrompt::Answer::Entered;
  server->Login();
  EXPECT_EQ("OpenSession " + world.folder.Path() + "|asked|for", library.calls.back());
  EXPECT_EQ(Value(std::string("asked")), server->Get(Property::loginName));
  EXPECT_EQ((Lines{"VIM Login|ann", "VIM Login|ann"}), prompt.questions);
  server->Logout();
  server->Put(Property::Password, std::string());
  prompt.postOffice = world.folder.Path("nowhere");
  EXPECT_EQ("546 Post office directory does not exist.", FailureOf([&] { server->Login(); }));
  prompt.postOffice = std::string();
  server->Login();
  EXPECT_EQ("OpenSession |asked|for", library.calls.back());
}

TEST_F(VimBackEndTest, APostOfficeThatIsNotThereEndsTheLoginFirst) {
  server->Put(Property::postOffice, world.folder.Path("nowhere"));
  EXPECT_EQ("546 Post office directory does not exist.", FailureOf([&] { server->Login(); }));
  EXPECT_EQ(Lines{}, library.calls);
}

TEST_F(VimBackEndTest, WhatALoginCanDoWithout) {
  const auto login = [&](const char* call, vim::Status status) {
    library.failures = {{call, status}};
    auto failure = FailureOf([&] { server->Login(); });
    library.failures.clear();
    server->Logout();
    return failure;
  };
  const std::string kFailed = " Failed to Logon to mail system (VIMOpenSession)";
  EXPECT_EQ("4009 Error initializing VIM (VIMInitialize)", login("Initialize", 9));
  EXPECT_EQ("", login("GetDefaultSessionInfo", 18));
  EXPECT_EQ("4016" + kFailed, login("GetDefaultSessionInfo", 16));
  for (const vim::Status status : {12U, 16U, 21U}) {
    EXPECT_EQ("", login("QueryCapability", status)) << status;
  }
  EXPECT_EQ("4018" + kFailed, login("QueryCapability", 18));
  server->Put(Property::loginName, std::string("joe"));
  server->Put(Property::Password, std::string("secret"));
  EXPECT_EQ("4011" + kFailed, login("OpenSession", 11));
}

TEST_F(VimBackEndTest, TheLibraryIsLookedForBesideTheMailProgram) {
  auto& profile = world.workstation.profile;
  world.workstation.libraries = {"C:\\CCMAIL\\vim32.dll"};
  const auto directory = [&] {
    server->Login();
    auto call = library.calls.front();
    const bool present = world.NewServer()->QueryMailSystem(2) == kTrue;
    server.reset();
    library.calls.clear();
    server = NewServer();
    return call + (present ? " present" : "");
  };
  EXPECT_EQ("Initialize", directory());
  profile["cc:Mail/ProgramPath"] = "C:\\CCMAIL\\WMAIL.EXE";
  EXPECT_EQ("Initialize C:\\CCMAIL present", directory());
  profile["LotusMail/Program"] = "D:\\LOTUS\\MAIL.EXE";
  EXPECT_EQ("Initialize D:\\LOTUS", directory());
  world.workstation.libraries = {"vim32.dll"};
  EXPECT_EQ("Initialize present", directory());
}

TEST_F(VimBackEndTest, HeadersByDateWithWhatIsUnread) {
  Receive({2026, 11, 22, 23, 30, 0, true});  // the next day here
  Receive({});
  auto& read = Receive({2026, 11, 22, 23, 45, 5, false});
  read.unread = false;
  read.header.priority = 0;
  read.header.returnReceipt = false;
  read.items.clear();
  Receive({2026, 2, 31, 0, 0, 0, false});
  server->LoadMessageHeaders();
  EXPECT_EQ((Lines{"OpenMessageContainer", "EnumerateMessages 58", "EnumerateMessages 58",
                   "EnumerateMessages 58 unread", "EnumerateMessages 58 unread", "OpenMessage",
                   "EnumerateMessageItems 6", "GetMessageHeader", "CloseMessage", "OpenMessage"}),
            Lines(library.calls.begin() + 4, library.calls.begin() + 14));
  EXPECT_EQ("11/22/2026 11:45:05 PM; 11/23/2026 12:30:00 AM; ; ", Column(10));
  EXPECT_EQ("subject 3; subject 1; subject 2; subject 4", Column(4));
  EXPECT_EQ("00000003FFFFFFFE; 00000001FFFFFFFE; 00000002FFFFFFFE; 00000004FFFFFFFE", Column(22));
  EXPECT_EQ("1; 2; 3; 4", Column(20));
  EXPECT_EQ("R; U; U; U", Column(23));
  EXPECT_EQ("5; 1; 1; 1", Column(25));
  EXPECT_EQ("0; -1; -1; -1", Column(27));
  EXPECT_EQ("0; 3; 3; 3", Column(34));
  server->Put(Property::dateSort, std::int16_t{0});
  server->Put(Property::dateFormat, std::string("FIXED"));
  server->Put(Property::MaximumHeaders, std::int32_t{3});
  server->LoadMessageHeaders();
  EXPECT_EQ("Nov 23, 2026 00:30:00; ; Nov 22, 2026 23:45:05", Column(10));
  library.calls.clear();
  server->Put(Property::unreadOnly, std::int16_t{-1});
  server->Put(Property::dateFormat, std::string("native"));
  server->LoadMessageHeaders();
  EXPECT_EQ("11/23/2026 12:30:00 AM; ; ", Column(10));
  EXPECT_EQ(0, std::count(library.calls.begin(), library.calls.end(), "EnumerateMessages 58"));
}

TEST_F(VimBackEndTest, AMessageComesFromTheFolderOfItsHeader) {
  Receive().folder = "Orders";
  Receive().sent = true;
  Receive();
  const auto subjects = [&](const char* folder) {
    server->Put(Property::Folder, std::string(folder));
    server->LoadMessageHeaders();
    return Column(4);
  };
  EXPECT_EQ("subject 3", subjects("inbox"));
  EXPECT_EQ("subject 3", subjects(""));
  EXPECT_EQ("subject 2", subjects("QLNM_MESSAGE_LOG"));
  EXPECT_EQ(1, std::count(library.calls.begin(), library.calls.end(), "OpenMessageContainer"));
  EXPECT_EQ("subject 1", subjects("Orders"));
  server->Put(Property::Folder, std::string("Others"));
  library.calls.clear();
  server->LoadMessage();
  EXPECT_EQ("OpenMessage", library.calls.front());
  EXPECT_EQ(2U, library.open.size());
  library.unreadCount = 0xFFFFFFFF;
  EXPECT_EQ(Value(std::int32_t{0x7FFFFFFF}), server->Get(Property::UnreadCount));
  EXPECT_EQ("OpenMessageContainer", library.calls[library.calls.size() - 2]);
}

TEST_F(VimBackEndTest, EnumerationsThatNeverEndDo) {
  Receive();
  Receive();
  Receive();
  server->LoadMessageHeaders();
  library.standsStill = true;
  server->LoadMessageHeaders();
  EXPECT_EQ("subject 1; subject 2", Column(4));
  server->LoadMessage();
  EXPECT_EQ("Joe <joe at HQ>, Ann", server->GetMessageItemString(1));
  library.givesNothing = true;
  library.standsStill = false;
  server->LoadMessage();
  EXPECT_EQ("", server->GetMessageItemString(1));
  EXPECT_EQ("4019 No match", FailureOf([&] { server->ResolveName("ann"); }));
  server->LoadMessageHeaders();
  EXPECT_EQ("", Column(4));
}

TEST_F(VimBackEndTest, LoadsAMessageWithItsFiles) {
  Receive();
  const auto directory = ReceiveInto("received");
  server->LoadMessageHeaders();
  library.calls.clear();
  server->LoadMessage();
  EXPECT_EQ((Lines{"OpenMessage", "EnumerateMessageItems 62", "EnumerateMessageItems 62",
                   "GetMessageItemText", "GetMessageItemText", "EnumerateMessageItems 6",
                   "EnumerateMessageItems 6", "GetMessageItemFile", "GetMessageItemFile",
                   "GetMessageItemFile", "EnumerateMessageRecipients 97",
                   "EnumerateMessageRecipients 97", "EnumerateMessageRecipients 10",
                   "EnumerateMessageRecipients 9", "MarkMessageAsRead", "CloseMessage"}),
            library.calls);
  EXPECT_EQ((Lines{"TEMPFILE.TMP", "evil.txt", "report.txt"}), FilesIn(directory));
  EXPECT_EQ("two", ContentOf(*world.files, directory + "/evil.txt"));
  EXPECT_EQ("Joe <joe at HQ>, Ann, eve at HQ|Bob|Eve|subject 1|text and more",
            server->GetMessageItemString(1) + "|" + server->GetMessageItemString(2) + "|" +
                server->GetMessageItemString(3) + "|" + server->GetMessageItemString(4) + "|" +
                server->GetMessageItemString(5));
  EXPECT_EQ(Value(std::int16_t{-1}), server->Get(Property::Certify));
  EXPECT_FALSE(library.mailbox[0].unread);
  // A message of styled text alone, looked at.
  library.mailbox[0].unread = true;
  library.mailbox[0].items[0].type = "VIM_STYLED";
  library.mailbox[0].items[2].type = "VIM_CD";
  server->Put(Property::peekOnly, std::int16_t{-1});
  server->Put(Property::suppressAttachments, std::int16_t{-1});
  server->LoadMessage();
  EXPECT_TRUE(library.mailbox[0].unread);
  EXPECT_EQ("text and more", server->GetMessageItemString(5));
  EXPECT_EQ(0, server->GetMessageItemCount(6));
  EXPECT_EQ(3U, FilesIn(directory).size());
}

TEST_F(VimBackEndTest, AFailedLoadLeavesTheMessageBefore) {
  Receive();
  const auto directory = ReceiveInto("received");
  server->LoadMessageHeaders();
  server->Put(Property::subject, std::string("before"));
  const std::map<std::string, const char*> kTexts = {
      {"OpenMessage", "Cannot open message (VIMOpenMessages)"},
      {"EnumerateMessageItems 62",
       "Cannot enumerate note part message items (VIMEnumerateMessageItems)"},
      {"GetMessageItemText", "Cannot get note part message item (VIMGetMessageItem)"},
      {"EnumerateMessageItems 6", "Cannot enumerate attachments (VIMEnumerateMessageItems)"},
      {"GetMessageItemFile", "Cannot get file attachhment (VIMGetMessageItem)"},
      {"EnumerateMessageRecipients 97",
       "Cannot enumerate message recipients TO (VIMEnumerateMessageRecipients)"},
      {"EnumerateMessageRecipients 10",
       "Cannot enumerate message recipients CC (VIMEnumerateMessageRecipients)"},
      {"EnumerateMessageRecipients 9",
       "Cannot enumerate message recipients BCC (VIMEnumerateMessageRecipients)"},
      {"MarkMessageAsRead", "Failure marking message as read (VIMMarkMessageAsRead)"},
      {"CloseMessage", "Failure closing message (VIMCloseMessage)"}};
  for (const auto& [call, text] : kTexts) {
    library.failures = {{call, 14}};
    const auto handles = library.open.size();
    EXPECT_EQ(std::string("4014 ") + text, FailureOf([&] { server->LoadMessage(); }));
    if (call != "CloseMessage") {
      EXPECT_EQ(handles, library.open.size()) << call;
    }
    EXPECT_EQ(Lines{}, FilesIn(directory)) << call;
    EXPECT_EQ("before", server->GetMessageItemString(4)) << call;
  }
  library.failures.clear();
  ASSERT_TRUE(world.files->RemoveEmptyDirectory(directory));
  EXPECT_EQ("4027 Cannot get file attachhment (VIMGetMessageItem)",
            FailureOf([&] { server->LoadMessage(); }));
}

TEST_F(VimBackEndTest, HeadersReadBeforeAFailureStay) {
  Receive();
  Receive();
  server->Put(Property::ErrorDisplay, std::int16_t{-1});
  for (const auto* const call :
       {"EnumerateMessages 58", "EnumerateMessages 58 unread", "OpenMessage",
        "EnumerateMessageItems", "GetMessageHeader", "CloseMessage"}) {
    library.failures = {{call, 5}};
    EXPECT_EQ("4005 Cannot get message headers (VIMEnumerateMessages)",
              FailureOf([&] { server->LoadMessageHeaders(); }));
    EXPECT_EQ("", Column(4)) << call;
  }
  EXPECT_EQ("VIM Mail Error|Cannot get message headers (VIMEnumerateMessages): {5} Bad parameter",
            world.messageBox.shown.back());
  library.failures.clear();
  library.mailbox[1].envelope.reference = {1, 0xFFFFFFFE};
  library.mailbox[0].envelope.reference = {7, 7};
  server->LoadMessageHeaders();
  EXPECT_EQ("subject 1; subject 2", Column(4));
  library.failures = {{"OpenMessageContainer", 22}};
  server->Put(Property::Folder, std::string("Orders"));
  EXPECT_EQ("4022 Failed to open message container (VIMOpenMessageContainer)",
            FailureOf([&] { server->LoadMessageHeaders(); }));
  EXPECT_EQ("subject 1; subject 2", Column(4));
}

TEST_F(VimBackEndTest, NumbersAreFoldedAndTextsFollowTheStep) {
  server->Login();
  const auto failing = [&](vim::Status status) {
    library.failures = {{"QueryUnreadMailCount", status}};
    return FailureOf([&] { server->Get(Property::UnreadCount); });
  };
  EXPECT_EQ("4259 Message container is corrupted", failing(259));
  EXPECT_EQ("4014 Undetermined", failing(14));
  EXPECT_EQ("4000 Undetermined", failing(200000));
  EXPECT_EQ("4000 Undetermined", failing(0xFFFFFFFF));
  library.failures = {{"CloseSession", 10}};
  EXPECT_EQ("4010 Invalid object", FailureOf([&] { server->Logout(); }));
  EXPECT_EQ(Value(std::int32_t{41}), server->Get(Property::sessionHandle));
}

TEST_F(VimBackEndTest, MovesByCategory) {
  const auto move = [&](const char* from, const char* to) {
    library.mailbox.clear();
    Receive().folder = from;
    Receive().sent = true;
    server->Put(Property::Folder, std::string(from));
    if (std::string(from) == "QLNM_MESSAGE_LOG") library.mailbox[0].folder = "x";
    server->LoadMessageHeaders();
    library.calls.clear();
    return FailureOf([&] { server->MoveMessage(to); });
  };
  EXPECT_EQ("", move("", "Orders"));
  EXPECT_EQ((Lines{"SetMessageCategory Orders", "RemoveMessage"}), library.calls);
  EXPECT_EQ("", move("Orders", "Inbox"));
  EXPECT_EQ(Lines{"RemoveMessageCategory Orders"}, library.calls);
  EXPECT_EQ("", move("", "INBOX"));
  EXPECT_EQ("", move("Orders", "ORDERS"));
  EXPECT_EQ(Lines{}, library.calls);
  const std::string kFailed = "Cannot move message (VIMSetMessageCategory)";
  EXPECT_EQ("4016 " + kFailed, move("Orders", "QLNM_MESSAGE_LOG"));
  EXPECT_EQ("4016 " + kFailed, move("QLNM_MESSAGE_LOG", "Orders"));
  EXPECT_EQ(Lines{}, library.calls);
  for (const auto* const call : {"SetMessageCategory", "RemoveMessage"}) {
    library.failures = {{call, 5}};
    EXPECT_EQ("4005 " + kFailed, move("", "Orders"));
  }
  EXPECT_EQ("RemoveMessageCategory Orders", library.calls.back());  // it is in one place again
  EXPECT_EQ("4005 Cannot delete message (VIMRemoveMessage)",
            FailureOf([&] { server->DeleteMessage(); }));
  library.failures.clear();
  server->DeleteMessage();
  EXPECT_EQ(1U, library.mailbox.size());
  library.calls.clear();
  EXPECT_EQ("530 Cannot copy a message with VIM.", FailureOf([&] { server->CopyMessage("x"); }));
  EXPECT_EQ(Lines{}, library.calls);
}

TEST_F(VimBackEndTest, HeadersAreGoodForTheirSessionOnly) {
  Receive();
  const auto refused = [&](Server& one) {
    return FailureOf([&] { one.LoadMessage(); }) ==
           "532 No valid message headers have been loaded.";
  };
  server->LoadMessageHeaders();
  auto other = NewServer();
  EXPECT_TRUE(refused(*other));
  other->Login();
  EXPECT_TRUE(refused(*other));
  server->LoadMessage();
  server->Logout();
  server->Login();
  EXPECT_TRUE(refused(*server));
  server->LoadMessageHeaders();
  world.shared.headerOrigin.mailbox = "MAPI";
  EXPECT_TRUE(refused(*server));
}

TEST_F(VimBackEndTest, EverySessionIsEndedByWhoBeganIt) {
  server->Login();
  server->Login();
  auto other = NewServer();
  other->LoadMessageHeaders();
  EXPECT_EQ(3U, library.open.size());
  server->Logout();
  server->Logout();
  EXPECT_EQ(2U, library.open.size());
  server.reset();
  EXPECT_EQ(2U, library.open.size());
  other.reset();
  EXPECT_TRUE(library.open.empty());
  EXPECT_EQ((Lines{"CloseMessageContainer", "CloseSession", "Terminate"}),
            Lines(library.calls.end() - 3, library.calls.end()));
  // A process that goes on begins anew.
  library.calls.clear();
  server = NewServer();
  server->Login();
  EXPECT_EQ("Initialize", library.calls.front());
}

TEST_F(VimBackEndTest, ASessionOfTheClientIsUsedAndNeverClosed) {
  library.open = {7};
  Receive();
  server->Put(Property::SessionHandleEx, std::int32_t{7});
  server->LoadMessageHeaders();
  EXPECT_EQ((Lines{"Initialize", "OpenMessageContainer", "EnumerateMessages 58"}),
            Lines(library.calls.begin(), library.calls.begin() + 3));
  // The same number again may be another session.
  server->Put(Property::SessionHandleEx, std::int32_t{7});
  EXPECT_EQ("532 No valid message headers have been loaded.",
            FailureOf([&] { server->DeleteMessage(); }));
  server->LoadMessageHeaders();
  server->Logout();
  EXPECT_EQ(Value(std::int32_t{0}), server->Get(Property::sessionHandle));
  server->Put(Property::SessionHandleEx, std::int32_t{7});
  server->LoadMessageHeaders();
  server->Put(Property::SessionHandleEx, std::int32_t{0});
  EXPECT_EQ((std::set<vim::Handle>{7}), library.open);
  // Of another Server: it stays his.
  auto owner = NewServer();
  owner->LoadMessageHeaders();
  server->Put(Property::SessionHandleEx, ToInt32(owner->Get(Property::sessionHandle)));
  server->LoadMessage();
  server->Logout();
  owner->LoadMessage();
  server.reset();
  owner.reset();
  EXPECT_EQ((std::set<vim::Handle>{7}), library.open);
}

TEST_F(VimBackEndTest, ResolvesNames) {
  library.books = {{"Private", {{"ann smith", {}}, {"bob", {}}}},
                   {"Public", {{"ann", "ann at HQ"}}},
                   {"Third", {{"max", "max at HQ"}}}};
  EXPECT_EQ("ann", server->ResolveName("ann"));
  EXPECT_EQ("ann <ann at HQ>", server->ResolveNameEx("ann"));
  EXPECT_EQ("max <max at HQ>", server->ResolveNameEx("ma"));
  EXPECT_EQ("ann smith", server->ResolveNameEx("ann "));
  EXPECT_EQ("4019 No match", FailureOf([&] { server->ResolveName("eve"); }));
  EXPECT_EQ(1U, library.open.size());
  const std::map<std::string, std::string> kFailures = {
      {"EnumerateAddressBooks", "4258 Recipient not unique"},
      {"OpenAddressBook Public", "4258 Recipient not unique"},
      {"MatchAddressBook", "4258 Recipient not unique"},
      {"GetABEntryAttributes", "4258 Recipient not unique"}};
  for (const auto& [call, text] : kFailures) {
    library.failures = {{call, 258}};
    EXPECT_EQ(text, FailureOf([&] { server->ResolveName("ann"); })) << call;
    EXPECT_EQ(1U, library.open.size());
  }
}

class VimAddressBookTest : public VimBackEndTest {
 protected:
  VimAddressBookTest() {
    library.books = {{"Private", {}}, {"Public", {{"ann", "ann at HQ"}, {"all", {}, true}}}};
    for (int i = 0; i < 120; ++i) {
      library.books[0].entries.push_back({"friend " + std::to_string(i), {}, false});
    }
  }

  std::string OpenBook(Server& opener, const std::string& name) {
    return FailureOf([&] {
      opener.WithAddressBooks("OpenAddressBook", MemberKind::Method,
                              [&](AddressBooks& books, MailRequest& request) {
                                return books.Open(request, name, book);
                              });
    });
  }
  // How many there are then, or what has failed.
  std::string Fetch() {
    auto failure = FailureOf([&] {
      server->WithAddressBooks(
          "MoveNext", MemberKind::Method,
          [&](AddressBooks&, MailRequest& request) { return book->Fetch(request, entries, more); });
    });
    return failure.empty() ? std::to_string(entries.size()) + (more ? " and more" : "") : failure;
  }

  std::unique_ptr<OpenAddressBook> book;
  std::vector<AddressEntry> entries;
  bool more = true;
};

TEST_F(VimAddressBookTest, EntriesComeAsTheyAreFetched) {
  Lines names;
  server->WithAddressBooks(
      "BookNames", MemberKind::Property,
      [&](AddressBooks& books, MailRequest& request) { return books.Names(request, names); });
  EXPECT_EQ((Lines{"Private", "Public"}), names);
  EXPECT_EQ("529 Address book does not exist.", OpenBook(*server, "Other"));
  EXPECT_EQ("", OpenBook(*server, ""));
  library.calls.clear();
  EXPECT_EQ("50 and more", Fetch());
  EXPECT_EQ(25U, library.calls.size());
  library.failures = {{"EnumerateAddressBookEntries", 24}};
  EXPECT_EQ("4024 Read failure", Fetch());
  library.failures.clear();
  EXPECT_EQ("100 and more", Fetch());
  EXPECT_EQ("120", Fetch());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    EXPECT_EQ("friend " + std::to_string(i), entries[i].name);
  }
  EXPECT_EQ("", OpenBook(*server, "Public"));
  entries.clear();
  EXPECT_EQ("2", Fetch());
  EXPECT_EQ("ann at HQ", entries[0].address);
  EXPECT_FALSE(entries[0].isGroup);
  EXPECT_TRUE(entries[1].isGroup);
}

TEST_F(VimAddressBookTest, ALibraryThatFailsOrNeverEnds) {
  library.books.clear();
  EXPECT_EQ("529 Address book does not exist.", OpenBook(*server, ""));
  library.books = {{"Public", {{"ann", {}}, {"bob", {}}, {"eve", {}}}}};
  for (const auto* const call : {"EnumerateAddressBooks", "OpenAddressBook"}) {
    library.failures = {{call, 258}};
    EXPECT_EQ("4258 Recipient not unique", OpenBook(*server, "")) << call;
  }
  EXPECT_EQ(1U, library.open.size());
  library.failures.clear();
  OpenBook(*server, "");
  library.standsStill = true;
  EXPECT_EQ("2", Fetch());
  library.standsStill = false;
  library.givesNothing = true;
  EXPECT_EQ("2", Fetch());
}

TEST_F(VimAddressBookTest, ABookEndsWithItsSession) {
  const std::string kClosed = "751 The Address Book is not open.";
  OpenBook(*server, "");
  server->Logout();
  EXPECT_EQ((Lines{"CloseAddressBook", "CloseSession"}),
            Lines(library.calls.end() - 2, library.calls.end()));
  EXPECT_EQ(kClosed, Fetch());
  server->Login();
  EXPECT_EQ(kClosed, Fetch());
  // One that is open when another is opened in its place; and the Server takes another session.
  OpenBook(*server, "");
  OpenBook(*server, "");
  EXPECT_EQ(2U, library.open.size());
  library.open.insert(7);
  server->Put(Property::SessionHandleEx, std::int32_t{7});
  EXPECT_EQ(kClosed, Fetch());
  EXPECT_EQ(3U, library.open.size());
  book.reset();
  EXPECT_EQ(2U, library.open.size());
  OpenBook(*server, "");
  library.calls.clear();
  server.reset();
  EXPECT_EQ((Lines{"CloseAddressBook", "CloseSession", "Terminate"}), library.calls);
  book.reset();
  EXPECT_EQ(3U, library.calls.size());
}

TEST_F(VimAddressBookTest, ALogoutThatFailsHasClosedTheBook) {
  OpenBook(*server, "");
  library.failures = {{"CloseSession", 10}};
  EXPECT_EQ("4010 Invalid object", FailureOf([&] { server->Logout(); }));
  library.failures.clear();
  EXPECT_EQ("751 The Address Book is not open.", Fetch());
}

}  // namespace
}  // namespace quillon::testing
