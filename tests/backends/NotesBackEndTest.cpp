#include <gtest/gtest.h>

#include "backends/notes/NotesBackEnd.h"
#include "backends/notes/NotesNumber.h"
#include "core/WholeFile.h"
#include "mail/AddressBooks.h"
#include "support/FakeNotes.h"
#include "support/TestWorld.h"

namespace quillon::testing {
namespace {

constexpr auto kServerGone = static_cast<std::int32_t>(0x800706BAU);
constexpr auto kNotAuthorized = static_cast<std::int32_t>(0x80040FA0U);  // 4000

class NotesWorld : public TestWorld {
 public:
  NotesWorld() {
    instance.mailSystem = mail_system::kNotes;
    instance.attachmentDirectory = folder.Path();
    instance.errorDisplay = kTrue;
    shared.switches.temporaryDirectory = temporary.Path();
    workstation.windows = client.Path("none");
  }

  std::string WriteFile(TempFolder& place, const std::string& name, const std::string& text) {
    auto path = place.Path(name);
    WriteWholeFile(*files, path, BytesOf(text));
    return path;
  }

  // Two messages, of which the older one has two files of one name.
  void FillInbox() {
    auto& first = program.AddDocument(*program.inbox, "first", 46000);
    first.properties["Body"] = "Text";
    program.AddFile(first, "a.txt", "", "aaa");
    program.AddFile(first, "ATT1", "a.txt", "bbb");
    program.AddDocument(*program.inbox, "second", 46001.5).read = true;
  }

  // One with everything, whose file has another name for its reader.
  void FillMessage() {
    auto& message = shared.message;
    message.to = {"Ann Bell/Acme", "Joe <joe@example.com>"};
    message.cc = {"Bob <Bob Cook/Acme>"};
    message.bcc = {"eve@example.com"};
    message.subject = "Order";
    message.body = "one\r\ntwo\n\nthree\r";
    message.certify = kTrue;
    message.attachments = {{WriteFile(sources, "a.txt", "aaa"), "a.txt"},
                           {WriteFile(sources, "b.txt", "bbb"), "Report \"May\".txt"}};
    instance.nameResolution = kTrue;
    instance.importance = 1;
    instance.deliveryPriority = 4;
    instance.deliveryReport = 2;
    instance.signedMessage = kTrue;
    instance.encrypt = kTrue;
    program.AddUser("Ann Bell/Acme", "CN=Ann Bell/O=Acme", "");
    program.AddUser("Bob Cook/Acme", "CN=Bob Cook/O=Acme", "");
  }

  TempFolder temporary;
  TempFolder sources;  // of attachments
  TempFolder client;   // where it is installed
  FakeNotes program;
  InstanceState instance;
  MailRequest request{instance, shared};
  NotesBackEnd backEnd{{program.objects, workstation, *files, messageBox}};
};

class NotesBackEndTest : public ::testing::Test {
 protected:
  MailResult Load() { return world.backEnd.LoadMessageHeaders(world.request); }
  std::vector<std::string> Subjects() {
    std::vector<std::string> subjects;
    for (const auto& header : world.shared.headers) subjects.push_back(header.subject);
    return subjects;
  }
  std::size_t Count(const std::string& line) { return record.Count(line); }
  std::vector<std::string> FolderList(const std::string& parent, bool paths, bool all) {
    std::vector<std::string> list;
    const auto result = world.backEnd.GetFolderList(world.request, parent, paths, all, list);
    EXPECT_EQ(result.Succeeded() ? 0 : 50, result.Succeeded() ? 0 : result.number);
    return result.Succeeded() ? list : std::vector<std::string>{result.text};
  }

  NotesWorld world;
  FakeNotes& program = world.program;
  InstanceState& instance = world.instance;
  AutomationRecord& record = world.program.record;
};

using Lines = std::vector<std::string>;

TEST(NotesNumberTest, TheClientsOwnNumbersAreTheLowWords) {
  const struct {
    std::uint32_t error;
    std::int32_t number;
  } kCases[] = {
      {0x80040FA0, 4000},
      {0x80041B57, 6999},
      {4060, 4060},
      {0x80040F9F, static_cast<std::int32_t>(0x80040F9F)},  // 3999
      {0x80041B58, static_cast<std::int32_t>(0x80041B58)},  // 7000
      {0x80020009, static_cast<std::int32_t>(0x80020009)},
      {0x800706BA, 2},
      {0x80010108, 2},
      {0xFFFFFFFF, 2},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(NotesNumber(static_cast<std::int32_t>(test.error)), test.number)
        << std::hex << test.error;
  }
}

TEST_F(NotesBackEndTest, WithoutAClientItSaysSo) {
  program.objects.classes.clear();
  const auto result = world.backEnd.Login(world.request);
  EXPECT_EQ(result.number, 3);
  EXPECT_EQ(result.text, "The Notes client could not be started. no such class");
  EXPECT_EQ(world.messageBox.shown.back(),
            "Mail Error|Error opening mail database (Notes): {3} " + result.text);
  EXPECT_EQ(world.backEnd.SessionObject(), nullptr);
}

TEST_F(NotesBackEndTest, OpensTheMailDatabase) {
  const std::string ini =
      "[Notes]\r\nMailServer=CN=Mail1/O=Acme\r\nMailFile=mail\\ann\r\nDirectory=C:\\Data\r\n";
  const std::string local = "[Notes]\nMailFile=ann.nsf\nDirectory=/data\n";
  const auto localFile = std::string("/data") + MakeFileSystem()->Separator() + "ann.nsf";
  using Prepare = std::function<void(NotesWorld&)>;
  const struct {
    Prepare prepare;
    std::string opened;  // the last database asked for
    bool exists;
  } kCases[] = {
      {[](auto&) {}, "call Session.GetDatabase '' ''", true},
      {[](auto& w) { w.instance.postOffice = "Mail2/Acme!!mail\\joe.nsf"; },
       "call Session.GetDatabase 'Mail2/Acme' 'mail\\joe.nsf'", true},
      {[](auto& w) { w.instance.postOffice = "names.nsf"; },
       "call Session.GetDatabase '' 'names.nsf'", false},
      {[](auto& w) { w.program.hasMailFile = false; }, "call Session.GetDatabase '' ''", false},
      {[&](auto& w) {
         w.program.record.failing["Database.OpenMail"] = kNotAuthorized;
         w.workstation.environment["PATH"] = "/nowhere; \"" + w.client.Path() + "\"";
         w.WriteFile(w.client, "notes.ini", ini);
       },
       "call Session.GetDatabase 'CN=Mail1/O=Acme' 'mail\\ann'", true},
      {[&](auto& w) {
         w.program.hasMailFile = false;
         w.workstation.windows = w.client.Path();
         w.WriteFile(w.client, "notes.ini", local);
         w.program.existing = "!!" + localFile;
       },
       "call Session.GetDatabase '' '" + localFile + "'", true},
      {[&](auto& w) {
         w.program.hasMailFile = false;
         w.workstation.registry["machine/Software\\Lotus\\Notes/Path"] = w.client.Path();
         w.workstation.environment["PATH"] = w.sources.Path();
         w.WriteFile(w.sources, "notes.ini", local);
         w.WriteFile(w.client, "notes.ini", ini);
       },
       "call Session.GetDatabase 'CN=Mail1/O=Acme' 'mail\\ann'", true},
      {[&](auto& w) {
         w.program.hasMailFile = false;
         w.workstation.registry["Software\\Lotus\\Notes\\9.0/NotesIniPath"] =
             w.WriteFile(w.sources, "my.ini", ini);
         w.workstation.registry["machine/Software\\Lotus\\Notes/Path"] = w.client.Path();
         w.WriteFile(w.client, "notes.ini", local);
       },
       "call Session.GetDatabase 'CN=Mail1/O=Acme' 'mail\\ann'", true},
  };
  for (const auto& test : kCases) {
    NotesWorld each;
    const auto name = Split(test.opened, "'");
    each.program.existing = test.exists ? name[1] + "!!" + name[3] : "none";
    test.prepare(each);
    const auto result = each.backEnd.Login(each.request);
    EXPECT_EQ(result.number, test.exists ? kBackEndSuccess : 4063) << test.opened;
    std::string last;
    for (const auto& line : each.program.record.lines) {
      if (line.starts_with("call Session.GetDatabase")) last = line;
    }
    EXPECT_EQ(last, test.opened);
  }
}

TEST_F(NotesBackEndTest, KeepsOneSessionUntilItIsLost) {
  EXPECT_TRUE(Load().Succeeded());
  EXPECT_TRUE(Load().Succeeded());
  EXPECT_EQ(program.objects.created.size(), 1U);
  EXPECT_EQ(Count("call Database.OpenMail"), 1U);
  program.database->properties["IsOpen"] = false;  // somebody has closed it
  EXPECT_TRUE(Load().Succeeded());
  EXPECT_EQ(Count("call Database.OpenMail"), 2U);
  EXPECT_EQ(program.objects.created.size(), 1U);
  record.failing["Database.IsOpen"] = kServerGone;  // between two calls
  EXPECT_EQ(Load().number, 2);
  EXPECT_EQ(program.objects.created.size(), 2U);
  record.failing.clear();
  EXPECT_TRUE(Load().Succeeded());
  EXPECT_EQ(program.objects.created.size(), 3U);
  EXPECT_NE(world.backEnd.FolderObject(), nullptr);
  EXPECT_TRUE(world.backEnd.Logout(world.request).Succeeded());
  EXPECT_EQ(world.backEnd.FolderObject(), nullptr);

  FakeNotes other;
  other.AddDocument(*other.inbox, "another's", 1);
  world.backEnd.SetSessionObject(other.session);
  EXPECT_EQ(world.backEnd.SessionObject(), other.session);
  EXPECT_TRUE(Load().Succeeded());
  EXPECT_EQ(Subjects(), Lines{"another's"});
  world.backEnd.Shutdown(0);
  EXPECT_EQ(world.backEnd.SessionObject(), program.session);
}

TEST_F(NotesBackEndTest, HeadersHoldWhatTheDocumentsSay) {
  auto& full = program.AddDocument(*program.inbox, "Order \xE2\x82\xAC", 46348.75);
  full.items["From"] = "CN=Ann Bell/OU=Sales/O=Acme";
  full.items["SendTo"] = Values{"CN=Joe/O=Acme", "x@example.com"};
  full.items["CopyTo"] = "cn=Cid/c=us/o=Acme@Other";
  full.items["Importance"] = "1";
  full.items["ReturnReceipt"] = "1";
  full.items["$MessageID"] = "<1@acme>";
  auto& bare = program.AddDocument(*program.inbox, "", 0);
  // Items of other types than ours are as good as none.
  bare.items = {{"PostedDate", ""},
                {"Subject", AutomationDate{1}},
                {"From", Values{}},
                {"ReplyTo", "CN=Dan/O=Acme"},
                {"Importance", "3"}};
  bare.read = true;
  ASSERT_TRUE(Load().Succeeded());
  ASSERT_EQ(world.shared.headers.size(), 2U);
  const auto& header = world.shared.headers[0];
  EXPECT_EQ(header.number + header.uniqueId, "1ID Order \xE2\x82\xAC");
  EXPECT_EQ(header.subject, "Order \xE2\x82\xAC");
  EXPECT_EQ(header.originator, "Ann Bell/Sales/Acme");
  EXPECT_EQ(header.replyAddress, "Ann Bell/Sales/Acme");
  EXPECT_EQ(header.to, "Joe/Acme, x@example.com");
  EXPECT_EQ(header.cc, "Cid/us/Acme@Other");
  EXPECT_EQ(header.dateText, "11/22/2026 6:00:00 PM");
  EXPECT_EQ(header.messageId, "<1@acme>");
  EXPECT_EQ(header.status, kStatusUnread);
  EXPECT_EQ(header.priority, 1);
  EXPECT_EQ(header.receiptRequested, kTrue);
  const auto& other = world.shared.headers[1];
  EXPECT_EQ(other.subject + other.originator, "");
  EXPECT_EQ(other.replyAddress, "Dan/Acme");
  EXPECT_EQ(other.dateText, "7/6/2009");  // when it was made
  EXPECT_EQ(other.status, kStatusRead);
  EXPECT_EQ(other.priority, 5);
}

TEST_F(NotesBackEndTest, ListsTheNewestFirstOrAsTheViewHasThem) {
  EXPECT_TRUE(Load().Succeeded());  // an empty inbox
  EXPECT_TRUE(Subjects().empty());
  auto& view = *program.AddView("Projects\\2026", true);
  for (const auto& [subject, day] :
       std::map<std::string, double>{{"a", 10}, {"b", 30}, {"c", 20}, {"d", 30}, {"e", 1}}) {
    program.AddDocument(view, subject, day).read = subject != "c" && subject != "e";
  }
  view.documents[2]->items["PostedDate"] = "1900-01-19 00:00:00";  // day 20
  const struct {
    std::int32_t most;
    bool sorted;
    bool unreadOnly;
    Lines subjects;
  } kCases[] = {
      {1000, true, false, {"b", "d", "c", "a", "e"}},
      {2, true, false, {"b", "d"}},
      {3, false, false, {"a", "b", "c"}},
      {1000, true, true, {"c", "e"}},
      {1, false, true, {"c"}},
  };
  instance.folder = "\\\\projects\\\\2026";
  for (const auto& test : kCases) {
    instance.maximumHeaders = test.most;
    instance.dateSort = ToShortBool(test.sorted);
    instance.unreadOnly = ToShortBool(test.unreadOnly);
    EXPECT_TRUE(Load().Succeeded());
    EXPECT_EQ(Subjects(), test.subjects) << test.most << test.sorted << test.unreadOnly;
  }
  std::int32_t count = 0;
  EXPECT_TRUE(world.backEnd.UnreadCount(world.request, count).Succeeded());
  EXPECT_EQ(count, 2);
  EXPECT_EQ(Count("put View.AutoUpdate False"), Count("call View.Refresh"));

  // Deleted meanwhile: one is known to be, the other one can no more be read.
  view.documents[1]->properties["IsValid"] = false;
  view.documents[3]->properties["IsValid"] = false;
  view.documents[3]->methods["GetItemValue"] = [](const auto&) -> AutomationValue {
    throw AutomationError(kNoDocumentError, "deleted");
  };
  instance.maximumHeaders = 1000;
  instance.unreadOnly = kFalse;
  for (const bool sorted : {true, false}) {
    instance.dateSort = ToShortBool(sorted);
    EXPECT_TRUE(Load().Succeeded());
    EXPECT_EQ(Subjects(), sorted ? (Lines{"c", "a", "e"}) : (Lines{"a", "c", "e"}));
  }
  instance.folder = "Projects\\\\\\\\";
  EXPECT_EQ(Load().number, 50);
  EXPECT_EQ(Subjects().size(), 3U);  // what had been read before stays
}

TEST_F(NotesBackEndTest, AViewThatNeverEndsIsLeft) {
  program.AddDocument(*program.inbox, "again", 1);
  program.inbox->endless = true;
  std::int32_t count = 0;
  EXPECT_TRUE(world.backEnd.UnreadCount(world.request, count).Succeeded());
  EXPECT_EQ(count, 1000);
  instance.maximumHeaders = 3;
  EXPECT_TRUE(Load().Succeeded());
  EXPECT_EQ(Subjects(), (Lines{"again", "again", "again"}));
}

// Before version 8 it does not tell what is unread, and marks only what it saves.
TEST_F(NotesBackEndTest, WorksWithAnOlderClient) {
  world.FillInbox();
  for (const auto* const member : {"Document.GetRead", "Document.MarkRead", "Document.IsValid"}) {
    record.failing[member] = kUnknownName;
  }
  EXPECT_TRUE(Load().Succeeded());
  EXPECT_EQ(world.shared.headers.at(0).status, "");
  EXPECT_TRUE(world.backEnd.LoadMessage(world.request).Succeeded());
  EXPECT_EQ(Count("call Document.Save True False True"), 1U);
  std::int32_t count = 0;
  const std::string refused = "530 This version of Notes does not tell which messages are unread.";
  EXPECT_EQ(FailureOf([&] { world.backEnd.UnreadCount(world.request, count); }), refused);
  instance.unreadOnly = kTrue;
  EXPECT_EQ(FailureOf([&] { Load(); }), refused);
}

TEST_F(NotesBackEndTest, LoadsAMessageWithItsFiles) {
  EXPECT_EQ(FailureOf([&] { world.backEnd.LoadMessage(world.request); }), "532 ");
  world.FillInbox();
  auto& document = *program.inbox->documents[0];
  document.items["BlindCopyTo"] = "CN=Eve/O=Acme";
  ASSERT_TRUE(Load().Succeeded());
  instance.messageIndex = 1;
  instance.peekOnly = kTrue;
  instance.suppressAttachments = kTrue;
  ASSERT_TRUE(world.backEnd.LoadMessage(world.request).Succeeded());
  EXPECT_FALSE(document.read);
  EXPECT_TRUE(world.shared.message.attachments.empty());
  instance.peekOnly = instance.suppressAttachments = kFalse;
  ASSERT_TRUE(world.backEnd.LoadMessage(world.request).Succeeded());
  EXPECT_TRUE(document.read);
  const auto& message = world.shared.message;
  EXPECT_EQ(message.subject + "|" + message.body, "first|Text");
  EXPECT_EQ(message.bcc, Lines{"Eve/Acme"});
  ASSERT_EQ(message.attachments.size(), 2U);
  EXPECT_EQ(ContentOf(*world.files, message.attachments[0].file), "aaa");
  EXPECT_EQ(ContentOf(*world.files, message.attachments[1].file), "bbb");
  EXPECT_EQ(world.backEnd.MessageObject(), program.inbox->documents[0]);

  document.properties["IsValid"] = false;
  EXPECT_EQ(world.backEnd.LoadMessage(world.request).number, 4091);
  program.inbox->documents.clear();
  EXPECT_EQ(world.backEnd.LoadMessage(world.request).text, "Invalid universal id");
  EXPECT_EQ(world.backEnd.MessageObject(), nullptr);
  EXPECT_EQ(message.subject, "first");
  instance.postOffice = "other.nsf";
  EXPECT_EQ(FailureOf([&] { world.backEnd.DeleteMessage(world.request); }), "532 ");
}

TEST_F(NotesBackEndTest, PutsMessagesIntoFolders) {
  world.FillInbox();
  program.AddView("Projects\\2026", true);
  program.AddView("($All)", false);
  const auto move = [&](const std::string& folder, bool copy) {
    record.lines.clear();
    const auto result = world.backEnd.MoveCopyMessage(world.request, folder, copy);
    Lines calls;
    for (const auto& line : record.lines) {
      if (line.find("Folder '") != std::string::npos) calls.push_back(line.substr(14));
    }
    return result.Succeeded() ? Join(calls, ", ") : result.text;
  };
  ASSERT_TRUE(Load().Succeeded());
  EXPECT_EQ(move("Projects\\2026", true), "PutInFolder 'Projects\\2026'");
  EXPECT_EQ(move("projects\\2026", false),
            "PutInFolder 'Projects\\2026', RemoveFromFolder '($Inbox)'");
  EXPECT_EQ(move("Inbox", false), "PutInFolder '($Inbox)'");  // where it is
  EXPECT_EQ(move("($All)", false), "This is a view and no folder: ($All)");
  EXPECT_EQ(move("None", true), "There is no such folder: None");
  EXPECT_EQ(move("", true), "No destination folder specified.");
  instance.folder = "($All)";
  program.AddDocument(*program.views.back(), "third", 1);
  ASSERT_TRUE(Load().Succeeded());
  EXPECT_EQ(move("INBOX", false), "PutInFolder '($Inbox)'");  // a view shows it all the same
  EXPECT_TRUE(world.backEnd.DeleteMessage(world.request).Succeeded());
  EXPECT_EQ(Count("call Document.Remove True"), 1U);
}

TEST_F(NotesBackEndTest, KnowsTheFolders) {
  for (const auto* const name :
       {"Projects\\2026", "Projects", "Projects\\2026\\May", "Old\\1999"}) {
    program.AddView(name, true)->properties["Remove"] = {};
  }
  program.AddView("($Hidden)", true);
  program.AddView("Calendar", false)->properties["Remove"] = {};
  EXPECT_EQ(FolderList("", false, false), (Lines{"INBOX", "Projects"}));
  EXPECT_EQ(FolderList("\\\\", true, true), (Lines{"INBOX", "Old\\\\1999", "Projects",
                                                   "Projects\\\\2026", "Projects\\\\2026\\\\May"}));
  EXPECT_EQ(FolderList("projects", false, false), Lines{"2026"});
  EXPECT_EQ(FolderList("Projects", true, true),
            (Lines{"Projects\\\\2026", "Projects\\\\2026\\\\May"}));
  EXPECT_EQ(FolderList("Calendar", false, false), Lines{"This is a view and no folder: Calendar"});
  EXPECT_EQ(FolderList("None", false, false), Lines{"There is no such folder: None"});
  instance.folderDelimiter = "/";
  EXPECT_EQ(FolderList("/Projects/2026", true, true), Lines{"Projects/2026/May"});

  for (const auto& [name, there] : std::map<std::string, bool>{{"Projects/2026", true},
                                                               {"Calendar", true},
                                                               {"inbox", true},
                                                               {"", true},
                                                               {"Projects/2027", false}}) {
    bool exists = !there;
    EXPECT_TRUE(world.backEnd.FolderExists(world.request, name, exists).Succeeded());
    EXPECT_EQ(exists, there) << name;
    EXPECT_EQ(world.backEnd.FolderObject() != nullptr, there) << name;
  }
  for (const auto* const name : {"Inbox", "", "/", "Calendar", "None"}) {
    EXPECT_EQ(world.backEnd.DeleteFolder(world.request, name).number, 50) << name;
  }
  EXPECT_EQ(Count("call View.Remove"), 0U);
  EXPECT_TRUE(world.backEnd.DeleteFolder(world.request, "Old/1999").Succeeded());
  EXPECT_EQ(Count("call View.Remove"), 1U);
  EXPECT_EQ(FailureOf([&] { world.backEnd.CreateFolder(world.request, "New"); }), "530 ");
  EXPECT_EQ(FailureOf([&] { world.backEnd.CopyFolder(world.request, "a", "b", true); }), "530 ");
}

TEST_F(NotesBackEndTest, ResolvesNamesInTheAddressBooks) {
  program.AddUser("ann", "CN=Ann Bell/O=Acme", "ann@example.com");
  program.AddUser("ann", "CN=ANN BELL/O=Acme", "ann@example.com");  // by another of her names
  program.AddUser("ann", "", "");                                   // and what is no person
  program.AddUser("smith", "CN=Al Smith/O=Acme", "");
  program.AddUser("smith", "CN=Bo Smith/O=Acme", "");
  const struct {
    const char* name;
    bool withAddress;
    std::int32_t number;
    const char* resolved;
  } kCases[] = {
      {"Ann", false, kBackEndSuccess, "ANN BELL/Acme"},
      {"Ann", true, kBackEndSuccess, "ANN BELL/Acme <ann@example.com>"},
      {"smith", false, 4295, ""},
      {"nobody", false, 4294, ""},
      {"x@example.com", true, kBackEndSuccess, "x@example.com"},
  };
  for (const auto& test : kCases) {
    std::string resolved = "before";
    const auto result =
        world.backEnd.ResolveName(world.request, test.name, test.withAddress, resolved);
    EXPECT_EQ(result.number, test.number) << test.name;
    EXPECT_EQ(resolved, test.resolved) << test.name;
  }
  std::string resolved;
  record.failing["AddressBook.Open"] = kNotAuthorized;  // the first of two
  auto second = std::make_shared<RecordingObject>(record, "Second");
  second->properties["IsOpen"] = true;
  second->properties["GetView"] = AutomationObjectPtr(program.users);
  const auto resolve = [&](const char* name) {
    return world.backEnd.ResolveName(world.request, name, false, resolved).number;
  };
  EXPECT_EQ(resolve("ann"), 4000);
  std::get<Values>(program.session->properties["AddressBooks"])
      .emplace_back(AutomationObjectPtr(second));
  EXPECT_EQ(resolve("ann"), kBackEndSuccess);
  EXPECT_EQ(resolve("nobody"), 4000);
}

TEST_F(NotesBackEndTest, SendsAMemo) {
  world.FillMessage();
  world.shared.message.replyTo = "desk@example.com";
  ASSERT_TRUE(world.backEnd.Send(world.request).Succeeded());
  ASSERT_EQ(program.sent.size(), 1U);
  const std::map<std::string, std::string> expected{
      {"Form", "'Memo'"},
      {"SendTo", "['Ann Bell/Acme', 'Joe <joe@example.com>']"},
      {"CopyTo", "['Bob Cook/Acme']"},
      {"BlindCopyTo", "['eve@example.com']"},
      {"Subject", "'Order'"},
      {"ReplyTo", "'desk@example.com'"},
      {"Importance", "'1'"},
      {"DeliveryPriority", "'L'"},
      {"DeliveryReport", "'C'"},
      {"ReturnReceipt", "'1'"},
      {"Sign", "'1'"},
      {"Encrypt", "'1'"},
  };
  std::map<std::string, std::string> items;
  for (const auto& [item, value] : program.sent[0]->items) items[item] = Shown(value);
  EXPECT_EQ(items, expected);
  for (const auto* const property : {"SignOnSend", "EncryptOnSend", "SaveMessageOnSend"}) {
    EXPECT_TRUE(TruthOf(program.sent[0]->properties[property])) << property;
  }
  EXPECT_EQ(program.body, "one\ntwo\n\nthree\n");
  EXPECT_EQ(program.embedded, (Lines{"a.txt|aaa", "Report _May_.txt|bbb"}));
  EXPECT_EQ(world.backEnd.MessageObject(), program.sent[0]);
  EXPECT_TRUE(world.temporary.Names().empty());

  world.shared.message = {};
  world.shared.message.to = {"nobody"};
  EXPECT_EQ(world.backEnd.Send(world.request).number, 4294);
  world.shared.message.attachments = {{"gone", "a.txt"}};
  instance = {};
  EXPECT_EQ(FailureOf([&] { world.backEnd.Send(world.request); }), "535 ");
  EXPECT_EQ(program.sent.size(), 1U);
  world.shared.message.attachments.clear();
  ASSERT_TRUE(world.backEnd.Send(world.request).Succeeded());  // the client looks it up
  EXPECT_EQ(program.sent[1]->items.size(), 6U);
  EXPECT_FALSE(program.sent[1]->properties.contains("SignOnSend"));
}

// Whichever call fails: the operation fails with that call's number, leaves no file behind, and
// works the next time, with a new session where the old one has gone.
void FailEachNotesCall(const std::function<MailResult(NotesWorld&)>& operation,
                       std::int32_t failure) {
  const bool gone = failure == kServerGone;
  std::size_t failAt = 0;
  for (bool reached = true; reached;) {
    ASSERT_LT(++failAt, 200U);
    NotesWorld each;
    each.FillInbox();
    each.FillMessage();
    each.program.AddView("Old", true);
    ASSERT_TRUE(each.backEnd.LoadMessageHeaders(each.request).Succeeded());
    each.instance.messageIndex = 1;
    each.backEnd.Logout(each.request);
    auto& lines = each.program.record.lines;
    auto& created = each.program.objects.created;
    lines.clear();
    created.clear();
    each.program.record.failAt = failAt;
    each.program.record.failure = failure;
    const auto result = operation(each);
    reached = lines.size() >= failAt;
    const auto line = reached ? lines[failAt - 1] : "none";
    // The look whether it is still there is made for that.
    const bool healed = gone && line == "get Database.IsOpen" && created.size() == 2;
    EXPECT_EQ(result.number, !reached || healed ? kBackEndSuccess : gone ? 2 : 4000) << line;
    EXPECT_TRUE(each.temporary.Names().empty()) << line;
    if (result.Succeeded()) continue;
    EXPECT_TRUE(each.folder.Names().empty()) << line;
    EXPECT_TRUE(each.program.sent.empty()) << line;
    EXPECT_TRUE(operation(each).Succeeded()) << line;
    EXPECT_EQ(created.size(), gone ? 2U : 1U) << line;
  }
  EXPECT_GT(failAt, 10U);
}

TEST_F(NotesBackEndTest, RecoversFromTheFailureOfAnyCall) {
  const auto send = [](auto& w) { return w.backEnd.Send(w.request); };
  FailEachNotesCall(send, kServerGone);
  FailEachNotesCall(send, kNotAuthorized);
  FailEachNotesCall([](auto& w) { return w.backEnd.LoadMessageHeaders(w.request); },
                    kNotAuthorized);
  FailEachNotesCall([](auto& w) { return w.backEnd.LoadMessage(w.request); }, kNotAuthorized);
  FailEachNotesCall([](auto& w) { return w.backEnd.MoveCopyMessage(w.request, "Old", false); },
                    kServerGone);
  FailEachNotesCall(
      [](auto& w) {
        std::unique_ptr<OpenAddressBook> book;
        return w.backEnd.Books()->Open(w.request, {}, book);
      },
      kServerGone);
}

class NotesAddressBookTest : public NotesBackEndTest {
 protected:
  std::int32_t Open(const std::string& name) {
    auto number = kBackEndSuccess;
    const auto failure =
        FailureOf([&] { number = world.backEnd.Books()->Open(world.request, name, book).number; });
    return failure.empty() ? number : error_code::kInvalidValue;
  }
  // What has come, "*" before a group, or the number of the failure.
  std::string Fetch() {
    std::vector<AddressEntry> entries;
    const auto result = book->Fetch(world.request, entries, more);
    if (!result.Succeeded()) return std::to_string(result.number);
    std::string text;
    for (const auto& entry : entries) {
      text += (text.empty() ? "" : "; ") + std::string(entry.isGroup ? "*" : "") + entry.name;
      text += "|" + entry.address;
    }
    return text;
  }

  std::unique_ptr<OpenAddressBook> book;
  bool more = true;
};

TEST_F(NotesAddressBookTest, BooksHaveNamesOfTheirOwn) {
  auto& books = std::get<Values>(program.session->properties["AddressBooks"]);
  const auto add = [&](const char* title, const char* server, const char* file) {
    auto added = std::make_shared<RecordingObject>(record, title);
    added->properties = {{"IsOpen", false},  {"Open", {}},
                         {"Title", title},   {"Server", server},
                         {"FilePath", file}, {"GetView", AutomationObjectPtr()}};
    books.emplace_back(AutomationObjectPtr(added));
  };
  add("ADDRESS BOOK", "CN=Mail1/O=Acme", "names.nsf");
  add("Directory", "", "dir.nsf");
  add("Closed", "CN=Mail2/O=Acme", "names.nsf");
  books.emplace_back(AutomationObjectPtr());
  record.failing["Closed.Open"] = kNotAuthorized;
  std::vector<std::string> names;
  ASSERT_TRUE(world.backEnd.Books()->Names(world.request, names).Succeeded());
  EXPECT_EQ(
      (std::vector<std::string>{"Address Book (names.nsf)", "ADDRESS BOOK (Mail1/Acme!!names.nsf)",
                                "Directory", "Mail2/Acme!!names.nsf"}),
      names);
  EXPECT_EQ(Open("Address Book"), error_code::kInvalidValue);
  EXPECT_EQ(Open("mail2/acme!!names.nsf"), 4000);
  EXPECT_EQ(Open("directory"), notes::kFailure);  // it has no list of its names
  EXPECT_EQ(Open("address book (names.nsf)"), kBackEndSuccess);
  books.clear();
  EXPECT_EQ(Open(""), error_code::kInvalidValue);
}

TEST_F(NotesAddressBookTest, EachPersonAndGroupComesOnce) {
  program.AddUser("ann", "CN=Ann Bell/O=Acme", "ann@example.com");
  program.AddUser("all", "", "");
  program.users->documents[1]->items = {{"ListName", "Everybody"}, {"Form", "Group"}};
  program.users->documents[1]->properties["UniversalID"] = "group";
  program.AddUser("bell", "CN=Ann Bell/O=Acme", "ann@example.com");  // by another of her names
  program.AddUser("nobody", "", "");
  program.AddUser("gone", "Gone", "");
  program.users->documents.back()->properties["IsValid"] = false;
  program.AddUser("mail", "", "x@example.com");
  program.users->documents.back()->properties["UniversalID"] = "address";
  for (int i = 0; i < 60; ++i) program.AddUser("", "friend " + std::to_string(i), "");
  ASSERT_EQ(Open(""), kBackEndSuccess);
  const auto first = Fetch();
  EXPECT_TRUE(
      first.starts_with("Ann Bell/Acme|ann@example.com; *Everybody|; |x@example.com; "
                        "friend 0|; "))
      << first;
  EXPECT_TRUE(first.ends_with("; friend 43|"));
  EXPECT_TRUE(more);
  record.failAt = record.lines.size() + 5;
  record.failure = kNotAuthorized;
  EXPECT_EQ(Fetch(), "4000");
  const auto second = Fetch();
  EXPECT_TRUE(second.starts_with("friend 44|; ") && second.ends_with("; friend 59|")) << second;
  EXPECT_FALSE(more);
}

TEST_F(NotesAddressBookTest, ABookEndsWithItsSession) {
  program.AddUser("ann", "Ann", "");
  const auto ends = [&](const std::function<void()>& end) {
    Open("");
    EXPECT_EQ(Fetch(), "Ann|");
    end();
    return FailureOf([&] { Fetch(); }).substr(0, 3) == "751";
  };
  EXPECT_TRUE(ends([&] { world.backEnd.Logout(world.request); }));
  EXPECT_TRUE(ends([&] { world.backEnd.Shutdown(0); }));
  EXPECT_TRUE(ends([&] { world.backEnd.SetSessionObject(program.session); }));
  EXPECT_TRUE(ends([&] {
    record.failing["View.GetNextDocument"] = kServerGone;
    EXPECT_EQ(Fetch(), "2");
  }));
  record.failing.clear();
  EXPECT_FALSE(ends([&] { world.backEnd.Login(world.request); }));
}

TEST_F(NotesAddressBookTest, AViewThatNeverEndsIsLeft) {
  program.AddUser("ann", "Ann", "");
  program.users->endless = true;
  Open("");
  int fetches = 0;
  for (; more && fetches < 100; ++fetches) Fetch();
  EXPECT_LT(fetches, 30);
}

}  // namespace
}  // namespace quillon::testing
