#include <atomic>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <mutex>
#include <set>
#include <thread>

#include "backends/mhs/MhsBackEnd.h"
#include "backends/mhs/MhsErrorText.h"
#include "backends/mhs/MhsMailSystem.h"
#include "backends/mhs/MhsNames.h"
#include "backends/mhs/NetDirTable.h"
#include "backends/mhs/SmfAddress.h"
#include "backends/mhs/SmfDate.h"
#include "backends/mhs/SmfReader.h"
#include "backends/mhs/SmfWriter.h"
#include "core/WholeFile.h"
#include "mail/AddressBooks.h"
#include "support/FaultyFileSystem.h"
#include "support/TestWorld.h"

namespace quillon::testing {
namespace {

using Texts = std::vector<std::string>;

TEST(Smf, EveryByteOfTheCodePageComesBack) {
  const CodePage437 codePage;
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  EXPECT_EQ(all, codePage.ToBytes(codePage.ToText(all)));
  EXPECT_EQ("\xC3\xA4\xE2\x96\x88", codePage.ToText("\x84\xDB"));
  EXPECT_EQ("?", codePage.ToBytes("\xE2\x82\xAC"));
}

TEST(Smf, ReadsWhatThereIs) {
  const auto shown = [](const std::string& text) -> std::string {
    const auto message = ReadSmf(text);
    if (!message) return "none";
    std::string all;
    for (const auto& field : message->fields) all += field.name + "=" + field.value + "|";
    return all + message->body;
  };
  EXPECT_EQ("To=a, b|Subject=s|text\r\n",
            shown("SMF-71\r\n230To: a,\r\n\tb\r\n10Subject :s\r\n\r\ntext\r\n"));
  EXPECT_EQ("To=a|x\n", shown("smf-70 \nTo:a\n \t\nx\n"));
  EXPECT_EQ("To=a|Hello there\r\n", shown("SMF-70\r\nTo: a\r\nHello there\r\n"));
  EXPECT_EQ(" a\r\n", shown("SMF-70\r\n a\r\n"));
  EXPECT_EQ("To=a b|", shown(std::string("SMF-70\r\nTo: a\r\0\0b", 17)));
  for (const auto* const other : {"", "SMF-64\r\n", "SMF-700\r\n", "From: a\r\n", "MZ"}) {
    EXPECT_EQ("none", shown(other)) << other;
  }
}

TEST(Smf, FoldsWhatIsLongAndLetsNothingIn) {
  const std::string words = "a long line of several words, which goes on and on, with two  blanks";
  const SmfMessage message{{{"Subject", words + " and " + words + std::string(90, 'x') + " end"},
                            {"To", "bob\r\nBcc: eve\r\n\r\ntext"}},
                           "one\ntwo\rthree\r\n\r\nfour",
                           0};
  const auto written = WriteSmf(message);
  EXPECT_EQ(std::string::npos, written.find("\r\nBcc"));
  EXPECT_TRUE(written.ends_with("\r\n\r\none\r\ntwo\r\nthree\r\n\r\nfour\r\n")) << written;
  EXPECT_LT(written.find("\r\n "), 90U);
  const auto read = ReadSmf(written);
  ASSERT_TRUE(read);
  EXPECT_EQ(message.fields[0], read->fields[0]);
  EXPECT_EQ("bob Bcc: eve text", read->fields[1].value);
}

TEST(Smf, AddressesDatesAndNamesOfParcels) {
  Texts found;
  for (const auto& one : ParseSmfAddresses("a@x, (Bob, (B)) b@y  {NET/P,O/U},, c\t@z (open, d@x")) {
    found.push_back(one.name + "|" + one.address);
  }
  EXPECT_EQ((Texts{"|a@x", "Bob, (B)|b@y {NET/P,O/U}", "open, d@x|c @z"}), found);
  EXPECT_EQ("a@x (Ann [A])", FormatSmfAddress({"Ann (A)", "a@x"}));
  for (const auto* const bad :
       {"", "a,b", "a(b", "a<b>", "a?", "a\r\nb", "{x}", "a{x", "a}", "a{{}"}) {
    EXPECT_FALSE(IsSmfAddress(bad)) << bad;
  }
  EXPECT_TRUE(IsSmfAddress("bob@host {SMTP/bob@example.com}"));
  const auto date = [](const char* text) {
    const auto read = ParseSmfDate(text);
    return read ? FormatSmfDate(*read) + " " + std::to_string(read->year) : "none";
  };
  EXPECT_EQ("25-May-93 11:16:18 1993", date("25-May-93 11:16:18"));
  EXPECT_EQ("01-Jan-26 09:05:00 2026", date(" 1-JAN-2026  9:05 GMT"));
  EXPECT_EQ("31-Dec-79 00:00:00 2079", date("31-dec-79"));
  for (const auto* const bad : {"", "-", "30-Feb-93 11:16:18", "25-Mai-93", "25-May-93 25:00"}) {
    EXPECT_EQ("none", std::string(date(bad))) << bad;
  }
  for (const auto* const bad : {"", ".", "..", "..\\A", "A/B", "C:A", "CON", "nul", "LPT1.TXT",
                                "A.", ".A", "A.B.C", "NINECHARS", "A.LONG", "A B", "A*"}) {
    EXPECT_FALSE(IsParcelName(bad)) << bad;
  }
  EXPECT_TRUE(IsParcelName("A1B2C3D4.DOC"));
}

class StillDate final : public LocalClock {
 public:
  LocalTime Now() const override { return {2026, 11, 22, 0, 9, 5, 7, 0}; }
};

class NameAnswers final : public LoginPrompt {
 public:
  Answer Ask(const LoginQuestion& question, LoginFields& fields) override {
    captions.push_back(question.caption);
    if (answer == Answer::Entered) fields.name = "asked";
    return answer;
  }
  Answer answer = Answer::Unavailable;
  Texts captions;
};

// A workstation with MHS, whose master volume several of them may share.
struct MhsWorld : TestWorld {
  explicit MhsWorld(const std::string& volume) {
    mailSystems.Add(mhs);
    workstation.environment["MV"] = volume;
    server = NewServer();
    server->Put(Property::mailSystem, std::int16_t{3});
    server->Put(Property::loginName, std::string("ann"));
    server->Put(Property::AttachmentDirectory, folder.Path());
  }

  std::int32_t Headers() {
    server->LoadMessageHeaders();
    return ToInt32(server->Get(Property::messageCount));
  }
  void Load(std::int32_t index) {
    server->Put(Property::messageIndex, index);
    server->LoadMessage();
  }
  std::string Header(std::int32_t index, std::int16_t item) {
    server->Put(Property::messageIndex, index);
    return server->GetHeaderItemString(item);
  }

  FaultyFileSystem faulty{*files};
  NameAnswers prompt;
  StillDate clock;
  MhsAccounts accounts{faulty, workstation, configuration};
  MhsBackEnd backEnd{{accounts, faulty, clock, messageBox, prompt}};
  MhsMailSystem mhs{accounts, &backEnd};
  std::unique_ptr<Server> server;
};

class MhsTest : public ::testing::Test {
 protected:
  MhsTest() {
    for (const auto* const directory :
         {"MHS/MAIL/SND", "MHS/MAIL/PARCEL", "MHS/MAIL/USERS/ann/MHS", "MHS/MAIL/USERS/bob/FAX"}) {
      std::filesystem::create_directories(volume.Path(directory));
    }
  }

  Texts FilesIn(const std::string& directory) {
    Texts names;
    for (const auto& entry : world.files->List(volume.Path("MHS/MAIL/" + directory), {})) {
      names.push_back(entry.name);
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  std::string Content(const std::string& file) {
    return ContentOf(*world.files, volume.Path("MHS/MAIL/" + file));
  }
  void Write(const std::string& file, const std::string& text) {
    ASSERT_TRUE(WriteWholeFile(*world.files, volume.Path("MHS/MAIL/" + file), BytesOf(text)));
  }
  void Receive(const std::string& name, const std::string& fields,
               const std::string& text = "text") {
    Write("USERS/ann/MHS/" + name, "SMF-70\r\n" + fields + "\r\n\r\n" + text);
  }
  std::string LocalFile(const std::string& name, const std::string& text) {
    auto path = world.folder.Path(name);
    EXPECT_TRUE(WriteWholeFile(*world.files, path, BytesOf(text)));
    return path;
  }

  TempFolder volume;
  MhsWorld world{volume.Path()};
  Server& server = *world.server;
};

TEST_F(MhsTest, SendsToAllListsEachBccByItself) {
  world.configuration.WriteString("MHS", "Workgroup", "acme");
  server.AddRecipientTo("Bob (B) Baker <bob@acme>, carl");
  server.AddRecipientCc("<eve@host {SMTP/eve@example.com}>");
  server.AddRecipientBcc("dora@acme");
  server.Put(Property::subject, std::string("h\xC3\xA4 \xE2\x82\xAC\r\nBcc: x"));
  server.Put(Property::Message, std::string("one\ntwo"));
  server.Put(Property::Importance, std::int16_t{1});
  server.AddAttachment(LocalFile("long name.text", "content"));
  server.Send();
  const auto sent = FilesIn("SND");
  ASSERT_EQ(2U, sent.size());
  const auto parcels = FilesIn("PARCEL");
  ASSERT_EQ(2U, parcels.size());
  std::string copies;
  for (const auto& name : sent) {
    const auto message = ReadSmf(Content("SND/" + name));
    ASSERT_TRUE(message);
    const auto files = SmfAttachments(*message);
    ASSERT_EQ(1U, files.size());
    EXPECT_EQ("long name.text", files[0].name);
    EXPECT_EQ("content", Content("PARCEL/" + files[0].parcel));
    EXPECT_EQ("h\x84 ? Bcc: x", SmfValue(*message, "Subject"));
    EXPECT_EQ("ann@acme|22-Nov-26 09:05:07|High|IBM-437|one\r\ntwo\r\n",
              SmfValue(*message, "From") + "|" + SmfValue(*message, "Date") + "|" +
                  SmfValue(*message, "Importance") + "|" + SmfValue(*message, "Message-encoding") +
                  "|" + message->body);
    copies += SmfValue(*message, "To") + "/" + SmfValue(*message, "Cc") + "/" +
              SmfValue(*message, "Bcc") + ";";
  }
  const std::string open = "bob@acme (Bob [B] Baker), carl@acme/eve@host {SMTP/eve@example.com}/;";
  EXPECT_TRUE(copies == open + "dora@acme//;" || copies == "dora@acme//;" + open) << copies;
}

TEST_F(MhsTest, AFailedSendLeavesNothing) {
  const auto file = LocalFile("big.bin", std::string(1000, 'x'));
  server.AddRecipientTo("bob");
  server.AddRecipientBcc("carl");
  server.AddAttachment(file);
  const auto nothing = [&](const std::string& failure) {
    EXPECT_EQ(failure, FailureOf([&] { server.Send(); }));
    EXPECT_EQ(Texts{}, FilesIn("SND")) << failure;
    EXPECT_EQ(Texts{}, FilesIn("PARCEL")) << failure;
  };
  for (std::uint64_t room = 0; room < 2400; room += 80) {
    world.faulty.writeBudget = room;
    nothing("5602 Could not write message.  Is disk full?");
  }
  world.faulty.writeBudget = std::numeric_limits<std::uint64_t>::max();
  world.faulty.closeFails = true;
  nothing("5602 Could not write message.  Is disk full?");
  world.faulty.closeFails = false;
  for (const auto* const bad : {"a,b@c", "x\r\nTo: eve", "\xE2\x82\xAC@acme", "<>"}) {
    world.shared.message.bcc = {bad};
    nothing("5609 Bad addressee");
  }
  world.shared.message.bcc.clear();
  world.files->RemoveEmptyDirectory(volume.Path("MHS/MAIL/SND"));
  nothing("5601 Could not create a file in the mail directory");
  world.files->RemoveFile(file);
  nothing("5603 Attachment not found");
}

TEST_F(MhsTest, ListsByDateAndKnowsWhatWasRead) {
  Receive("A", "From: bob@x (Bob)\r\n230Subject: second\r\nDate: 02-Jan-26 10:00:00\r\nPriority: 2",
          std::string(20000, 'x'));
  Receive("B", "To: a@x (Ann, A), b\r\nSubject: first\r\nDate: 31-Dec-99 10:00\r\nImportance: low");
  Receive("QUILLON.NEW", "Subject: ours");
  Receive("C.TMP", "Subject: unfinished");
  Write("USERS/ann/MHS/D", "From: x\r\n\r\n");
  std::filesystem::create_directories(volume.Path("MHS/MAIL/USERS/ann/MHS/E"));
  EXPECT_EQ(2, world.Headers());
  EXPECT_EQ("1|first|12/31/1999 10:00:00 AM|U|5",
            world.Header(0, 20) + "|" + world.Header(0, 4) + "|" + world.Header(0, 10) + "|" +
                world.Header(0, 23) + "|" + world.Header(0, 25));
  EXPECT_EQ("second|Bob <bob@x>|bob@x|2|A", world.Header(1, 4) + "|" + world.Header(1, 9) + "|" +
                                                world.Header(1, 24) + "|" + world.Header(1, 25) +
                                                "|" + world.Header(1, 22));
  server.Put(Property::peekOnly, std::int16_t{-1});
  world.Load(1);
  EXPECT_EQ(Value(std::int32_t{2}), server.Get(Property::UnreadCount));
  server.Put(Property::peekOnly, std::int16_t{0});
  world.Load(1);
  EXPECT_EQ(Value(std::int32_t{1}), server.Get(Property::UnreadCount));
  EXPECT_EQ(20000U, world.shared.message.body.size());
  server.Put(Property::unreadOnly, std::int16_t{-1});
  EXPECT_EQ(1, world.Headers());
  world.Load(0);
  EXPECT_EQ((Texts{"Ann, A <a@x>", "b"}), world.shared.message.to);
  EXPECT_EQ(0, world.Headers());
  // Another message under the name of one that was read is a new one.
  Receive("B", "Subject: another");
  MhsWorld other(volume.Path());
  EXPECT_EQ(Value(std::int32_t{1}), other.server->Get(Property::UnreadCount));
  server.Put(Property::unreadOnly, std::int16_t{0});
  server.Put(Property::MaximumHeaders, std::int32_t{1});
  EXPECT_EQ(1, world.Headers());
}

TEST_F(MhsTest, LoadsAndDeletesAMessageWithItsParcels) {
  Receive("A",
          "Attachment: P1\r\nAttachment-name: one.text\r\nAttachment: P2.DOC\r\nAttachment: p1",
          "t\x84xt");
  Write("PARCEL/P1", "one");
  Write("PARCEL/P2.DOC", "two");
  Write("PARCEL/P3", "another's");
  ASSERT_EQ(1, world.Headers());
  world.Load(0);
  EXPECT_EQ("t\xC3\xA4xt", world.shared.message.body);
  const auto& files = world.shared.message.attachments;
  ASSERT_EQ(2U, files.size());
  EXPECT_EQ("one.text|P2.DOC", files[0].displayName + "|" + files[1].displayName);
  EXPECT_EQ("onetwo",
            ContentOf(*world.files, files[0].file) + ContentOf(*world.files, files[1].file));
  server.DeleteMessage();
  EXPECT_EQ((Texts{"QUILLON.IDX"}), FilesIn("USERS/ann/MHS"));
  EXPECT_EQ((Texts{"P3"}), FilesIn("PARCEL"));
  EXPECT_EQ("5605 Message not found", FailureOf([&] { server.DeleteMessage(); }));
  EXPECT_EQ("5605 Message not found", FailureOf([&] { server.LoadMessage(); }));
  Receive("A", "Subject: another one of that name");
  EXPECT_EQ("5605 Message not found", FailureOf([&] { server.DeleteMessage(); }));
  EXPECT_EQ((Texts{"A", "QUILLON.IDX"}), FilesIn("USERS/ann/MHS"));
}

TEST_F(MhsTest, ParcelsThatAreNotThere) {
  Write("secret", "out of reach");
  for (const auto* const parcel : {"GONE", "../secret", "..\\secret", "", "NUL"}) {
    Receive("A", "Attachment: P1\r\nAttachment: " + std::string(parcel));
    Write("PARCEL/P1", "one");
    ASSERT_EQ(1, world.Headers());
    EXPECT_EQ("5603 Attachment not found", FailureOf([&] { world.Load(0); })) << parcel;
    EXPECT_EQ(Value(std::int32_t{1}), server.Get(Property::UnreadCount));
    EXPECT_TRUE(world.shared.message.attachments.empty());
    server.Put(Property::suppressAttachments, std::int16_t{-1});
    world.Load(0);
    EXPECT_EQ("text", world.shared.message.body);
    server.Put(Property::suppressAttachments, std::int16_t{0});
    server.DeleteMessage();
    EXPECT_EQ(Texts{}, FilesIn("PARCEL"));
    EXPECT_EQ("out of reach", Content("secret"));
    world.files->RemoveFile(volume.Path("MHS/MAIL/USERS/ann/MHS/QUILLON.IDX"));
  }
}

TEST_F(MhsTest, ADiskThatTakesNothingMore) {
  Receive("A", "Attachment: P1");
  Write("PARCEL/P1", "one");
  ASSERT_EQ(1, world.Headers());
  server.Put(Property::ErrorDisplay, std::int16_t{-1});
  world.faulty.writeBudget = 3;
  EXPECT_EQ("5611 Could not mark message as read", FailureOf([&] { world.Load(0); }));
  EXPECT_EQ(
      Texts{"MHS Mail Error|Error getting mail message: {611} Could not mark message as read"},
      world.messageBox.shown);
  EXPECT_EQ(Texts{}, world.folder.Names());
  const auto directory = world.folder.Path("directory");
  ASSERT_TRUE(world.files->MakeDirectory(directory));
  server.Put(Property::AttachmentDirectory, directory);
  ASSERT_TRUE(world.files->RemoveEmptyDirectory(directory));
  EXPECT_EQ("5604 Could not write attached file", FailureOf([&] { world.Load(0); }));
  world.faulty.readBudget = 0;
  EXPECT_EQ("5606 Could not read message", FailureOf([&] { world.Load(0); }));
  // What cannot be read is in no list.
  EXPECT_EQ(0, world.Headers());
}

TEST_F(MhsTest, WhoseMailItIs) {
  const auto login = [&] { return FailureOf([&] { server.Login(); }); };
  EXPECT_EQ("", login());
  server.Put(Property::postOffice, volume.Path("MHS/MAIL"));
  EXPECT_EQ("", login());
  server.Put(Property::postOffice, volume.Path("MHS"));
  EXPECT_EQ("546 Post office directory does not exist.", login());
  server.Put(Property::postOffice, std::string());
  server.Put(Property::loginName, std::string());
  EXPECT_EQ("544 Insufficient login information.", login());
  world.prompt.answer = LoginPrompt::Answer::Cancelled;
  EXPECT_EQ("522 User selected cancel in dialog.", login());
  server.Put(Property::LoginDialog, std::int16_t{0});
  EXPECT_EQ("544 Insufficient login information.", login());
  EXPECT_EQ((Texts{"MHS Login", "MHS Login"}), world.prompt.captions);
  world.configuration.WriteString("MHS", "LoginName", "bob");
  EXPECT_EQ(0, world.Headers());
  Write("USERS/bob/FAX/A", "SMF-70\r\n\r\n");
  server.Put(Property::applicationName, std::string("FAX"));
  EXPECT_EQ(1, world.Headers());
  server.Put(Property::loginName, std::string("ann"));
  EXPECT_EQ("532 No valid message headers have been loaded.",
            FailureOf([&] { server.LoadMessage(); }));
  for (const auto* const nobody : {"carl", "..", "ann/MHS"}) {
    server.Put(Property::loginName, std::string(nobody));
    EXPECT_EQ("5612 Unknown user", FailureOf([&] { world.Headers(); })) << nobody;
  }
  EXPECT_TRUE(world.accounts.IsHere());
  world.configuration.WriteString("MHS", "PostOffice", volume.Path("nowhere"));
  EXPECT_FALSE(world.accounts.IsHere());
  world.configuration.Remove("MHS", "PostOffice");
  world.workstation.environment.clear();
  EXPECT_FALSE(world.accounts.IsHere());
  EXPECT_EQ("544 Insufficient login information.", login());
  EXPECT_EQ("530 Operation not supported by this mail system.",
            FailureOf([&] { server.MoveMessage("Done"); }));
}

// The marks of messages that are gone do not stay for ever, and those of others do.
TEST_F(MhsTest, MarksAreTidied) {
  Receive("A", "Subject: kept");
  ASSERT_EQ(1, world.Headers());
  world.Load(0);
  auto marks = Content("USERS/ann/MHS/QUILLON.IDX");
  for (int i = 0; i < 1500; ++i) marks += "gone" + std::to_string(i) + " 0123456789ABCDEF\r\n";
  Write("USERS/ann/MHS/QUILLON.IDX", "\xFF damaged" + marks + "cut sho");
  EXPECT_EQ(1, world.Headers());
  EXPECT_LT(Content("USERS/ann/MHS/QUILLON.IDX").size(), 100U);
  EXPECT_EQ(Value(std::int32_t{0}), server.Get(Property::UnreadCount));
  EXPECT_EQ((Texts{"A", "QUILLON.IDX"}), FilesIn("USERS/ann/MHS"));
}

// Programs that send, read and delete in one directory at once, and one that moves the mail.
TEST_F(MhsTest, SeveralProgramsAtOnceLoseNothing) {
  constexpr int kSenders = 3;
  constexpr int kReaders = 2;
  constexpr int kEach = 40;
  const auto file = LocalFile("file.txt", "content");
  std::vector<std::jthread> programs;
  programs.reserve(kSenders + kReaders);
  std::atomic<int> failures{0};
  std::atomic<int> loaded{0};
  for (int sender = 0; sender < kSenders; ++sender) {
    programs.emplace_back([&, sender] {
      MhsWorld own(volume.Path());
      for (int i = 0; i < kEach; ++i) {
        own.server->NewMessage();
        own.server->AddRecipientTo("ann");
        own.server->Put(Property::subject, std::to_string(sender) + "/" + std::to_string(i));
        own.server->AddAttachment(file);
        if (!FailureOf([&] { own.server->Send(); }).empty()) ++failures;
      }
    });
  }
  std::mutex lock;
  std::set<std::string> deleted;
  for (int reader = 0; reader < kReaders; ++reader) {
    programs.emplace_back([&] {
      MhsWorld own(volume.Path());
      while (loaded < kSenders * kEach && failures == 0) {
        for (auto count = own.Headers(); count-- > 0;) {
          // The other one may have been faster.
          if (!FailureOf([&] { own.Load(count); }).empty()) continue;
          const auto& message = own.shared.message;
          if (message.attachments.size() != 1 ||
              ContentOf(*own.files, message.attachments[0].file) != "content") {
            ++failures;
          }
          const auto failure = FailureOf([&] { own.server->DeleteMessage(); });
          const std::scoped_lock guard(lock);
          if (failure.empty() && deleted.insert(message.subject).second) ++loaded;
          if (!failure.empty() && failure != "5605 Message not found") ++failures;
        }
      }
    });
  }
  while (loaded < kSenders * kEach && failures == 0) {
    for (const auto& name : FilesIn("SND")) {
      world.files->RenameToNew(volume.Path("MHS/MAIL/SND/" + name),
                               volume.Path("MHS/MAIL/USERS/ann/MHS/" + name));
    }
  }
  programs.clear();
  EXPECT_EQ(0, failures);
  EXPECT_EQ(static_cast<std::size_t>(kSenders * kEach), deleted.size());
  EXPECT_EQ(Texts{}, FilesIn("PARCEL"));
}

TEST(NetDir, LinesThatAreEntries) {
  const std::string braces = "bob@host {SMTP/bob@example.com}";
  const struct {
    std::string line;
    const char* entry;
  } kLines[] = {
      {"bob@sales", "bob@sales|bob@sales"},
      {" \tbob@sales (Bob Cook)\t", "Bob Cook|bob@sales"},
      {"\"Bob Cook\" <bob@sales>", "Bob Cook|bob@sales"},
      {braces + " (Bob)", "Bob|bob@host {SMTP/bob@example.com}"},
      {"; bob@sales", ""},
      {"# bob@sales", ""},
      {"bob", ""},
      {"", ""},
      {"ann@a, bob@b", ""},
      {"Bob <bob@sales", ""},
      {"Bob <bob>", ""},
      {std::string("bob@sales\0x", 11), ""},
      {"bob@sales (" + std::string(1000, 'x') + ")", ""},
  };
  for (const auto& test : kLines) {
    const auto entry = NetDirEntry(test.line);
    EXPECT_EQ(test.entry, entry ? entry->name + "|" + entry->address : "") << test.line;
  }
}

// Wherever the pieces are cut, the same comes out.
TEST(NetDir, PiecesOfAFile) {
  const std::string file =
      "a@x\r\n\nb@x\r; no\n" + std::string(60, 'y') + "@x\nc@x\n\x1A" + "d@x\n";
  for (std::size_t size = 20; size < file.size() + 2; ++size) {
    std::string found;
    NetDirPiece read;
    std::size_t at = 0;
    for (bool isLast = false; !isLast && !read.isEnd; at += read.bytes) {
      isLast = at + size >= file.size();
      read = ReadNetDir(std::string_view(file).substr(at, size), isLast, read.isCut);
      ASSERT_GT(read.bytes, 0U);
      for (const auto& entry : read.entries) found += entry.address.substr(0, 2);
    }
    EXPECT_EQ(size > 62 ? "a@b@yyc@" : "a@b@c@", found) << size;
  }
}

class MhsAddressBookTest : public MhsTest {
 protected:
  MhsAddressBookTest() {
    std::filesystem::create_directories(volume.Path("MHS/MAIL/PUBLIC"));
    world.configuration.WriteString("MHS", "Workgroup", "acme");
  }

  std::string Open(const std::string& name) {
    return FailureOf([&] {
      server.WithAddressBooks("OpenAddressBook", MemberKind::Method,
                              [&](AddressBooks& books, MailRequest& request) {
                                return books.Open(request, name, book);
                              });
    });
  }
  // What comes, or what has failed.
  std::string Fetch() {
    std::vector<AddressEntry> entries;
    auto text = FailureOf([&] {
      server.WithAddressBooks(
          "MoveNext", MemberKind::Method,
          [&](AddressBooks&, MailRequest& request) { return book->Fetch(request, entries, more); });
    });
    for (const auto& entry : entries) text += entry.name + "|" + entry.address + ";";
    return text;
  }

  std::unique_ptr<OpenAddressBook> book;
  bool more = true;
};

TEST_F(MhsAddressBookTest, TheTableAndThenTheUsers) {
  std::filesystem::create_directories(volume.Path("MHS/MAIL/USERS/Carl"));
  Write("USERS/file", "");
  Write("PUBLIC/NETDIR.TAB",
        "M\x81ller <mueller@sales>\r\nBOB@ACME (Bob Baker)\r\nMueller@Sales\r\n");
  EXPECT_EQ("529 Address book does not exist.", Open("Other"));
  EXPECT_EQ("", Open("mhs"));
  EXPECT_EQ("M\xC3\xBCller|mueller@sales;Bob Baker|BOB@ACME;", Fetch());
  EXPECT_TRUE(more);
  EXPECT_EQ("ann|ann@acme;Carl|Carl@acme;", Fetch());
  EXPECT_FALSE(more);
}

TEST_F(MhsAddressBookTest, ALargeTableIsReadAsItIsWalked) {
  std::string table;
  for (int i = 0; i < 20000; ++i) table += "user" + std::to_string(i) + "@sales\r\n";
  Write("PUBLIC/NETDIR.TAB", table + std::string(10000, 'x') + "\r\nlast@sales");
  Open("");
  const auto before = world.faulty.calls;
  const auto first = Fetch();
  EXPECT_TRUE(first.starts_with("user0@sales|"));
  EXPECT_LT(world.faulty.calls, before + 5);
  std::string all = first;
  while (more) all += Fetch();
  EXPECT_EQ(20003, std::count(all.begin(), all.end(), ';'));
  EXPECT_TRUE(all.ends_with("last@sales|last@sales;ann|ann@acme;bob|bob@acme;"));
}

TEST_F(MhsAddressBookTest, WithoutATableOrWithOneThatCannotBeRead) {
  Open("");
  EXPECT_EQ("ann|ann@acme;bob|bob@acme;", Fetch());
  EXPECT_FALSE(more);
  Write("PUBLIC/NETDIR.TAB", "a@x");
  Open("");
  world.faulty.readBudget = 0;
  EXPECT_EQ("5613 Could not read address book", Fetch());
  world.faulty.readBudget = 100000;
  EXPECT_EQ("a@x|a@x;", Fetch());
}

TEST_F(MhsAddressBookTest, ABookIsOfOneLogin) {
  const std::string kClosed = "751 The Address Book is not open.";
  Open("");
  server.Logout();
  EXPECT_EQ(kClosed, Fetch());
  Open("");
  server.Put(Property::loginName, std::string("bob"));
  server.Login();
  EXPECT_EQ(kClosed, Fetch());
}

}  // namespace
}  // namespace quillon::testing
