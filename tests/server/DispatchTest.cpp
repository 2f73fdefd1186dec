#include <gtest/gtest.h>
#include <utility>

#include "support/TestWorld.h"

namespace quillon {
namespace {

using testing::FailureOf;
using testing::FakeBackEnd;
using testing::FakeMailSystem;
using testing::TestWorld;

Value MailSystemOf(Server& server) {
  return server.Get(Property::mailSystem);
}

TEST(Dispatch, DetectionTakesTheFirstPresentSystemThatCanBeServed) {
  TestWorld world;
  FakeBackEnd internet;
  FakeMailSystem internetSystem(MailFamily::Internet, internet);
  FakeBackEnd vim;
  VimMailSystem vimSystem(world.workstation, &vim);
  const auto lonely = world.NewServer();
  lonely->SetNativeSystem();  // finds nothing and does not fail
  EXPECT_EQ(Value(std::int16_t{0}), MailSystemOf(*lonely));
  EXPECT_EQ("515 No mail system was detected.", FailureOf([&] { lonely->Login(); }));

  world.mailSystems.Add(internetSystem);
  world.workstation.libraries = {"vim32.dll"};  // installed, but without a back end here
  lonely->Login();
  EXPECT_EQ(Value(std::int16_t{10}), MailSystemOf(*lonely));

  world.mailSystems.Add(vimSystem);
  const auto other = world.NewServer();
  other->SetNativeSystem();
  EXPECT_EQ(Value(std::int16_t{2}), MailSystemOf(*other));
}

TEST(Dispatch, TheConfigurationFileNamesWhatIsDetectedFirst) {
  TestWorld world;
  FakeBackEnd internet;
  FakeMailSystem internetSystem(MailFamily::Internet, internet);
  FakeBackEnd vim;
  VimMailSystem vimSystem(world.workstation, &vim);
  world.mailSystems.Add(internetSystem);
  world.mailSystems.Add(vimSystem);
  world.workstation.libraries = {"vim32.dll"};
  const auto detected = [&](const char* keyword) {
    world.configuration.WriteString("Server", "MailSystem", keyword);
    const auto server = world.NewServer();
    server->SetNativeSystem();
    return MailSystemOf(*server);
  };
  EXPECT_EQ(Value(std::int16_t{10}), detected("Internet"));
  EXPECT_EQ(Value(std::int16_t{2}), detected("Auto-Detect"));
  EXPECT_EQ(Value(std::int16_t{2}), detected("Notes"));  // is no keyword
  EXPECT_EQ(Value(std::int16_t{2}), detected("9"));      // is not there
}

// While a foreign mail system works, other calls find it busy, of whatever mail system they are;
// what needs none is answered.
TEST(Dispatch, TheUserSelectsOfWhatIsThere) {
  TestWorld world;
  FakeBackEnd backEnd;
  FakeMailSystem internet(MailFamily::Internet, backEnd);
  VimMailSystem vim(world.workstation, &backEnd);
  world.mailSystems.Add(internet);
  world.mailSystems.Add(vim);
  world.workstation.libraries = {"vim32.dll"};
  world.shared.ownerWindow = 4711;
  auto& dialog = world.mailSystemDialog;
  using Answer = MailSystemDialog::Answer;
  const auto server = world.NewServer();
  const auto select = [&](Answer answer, const char* line) {
    dialog.answer = answer;
    dialog.taken = line;
    const auto failure = FailureOf([&] { server->ShowMailSystemDialog(); });
    return failure + "|" + dialog.asked;
  };
  const std::string kInternet = "Internet mail (SMTP and POP3)";
  for (const auto answer : {Answer::Cancelled, Answer::Unavailable}) {
    EXPECT_EQ("522 User aborted.|Select Mail System|4711|" + kInternet, select(answer, "VIM"));
    EXPECT_EQ(Value(std::int16_t{0}), MailSystemOf(*server));
  }
  EXPECT_EQ("|Select Mail System|4711|" + kInternet, select(Answer::Selected, "VIM"));
  EXPECT_EQ(Value(std::int16_t{2}), MailSystemOf(*server));
  EXPECT_EQ("|Select Mail System|4711|VIM", select(Answer::Selected, kInternet.c_str()));
  EXPECT_EQ(Value(std::int16_t{10}), MailSystemOf(*server));
}

TEST(Dispatch, OneCallAtATimeWorksInAForeignMailSystem) {
  TestWorld world;
  FakeBackEnd internet;
  FakeMailSystem internetSystem(MailFamily::Internet, internet);
  FakeBackEnd vim;
  VimMailSystem vimSystem(world.workstation, &vim);
  world.mailSystems.Add(internetSystem);
  world.mailSystems.Add(vimSystem);
  const auto first = world.NewServer();
  first->Put(Property::mailSystem, std::int16_t{2});
  const auto other = world.NewServer();
  other->Put(Property::mailSystem, std::int16_t{10});
  int busy = 0;
  vim.during = [&] {
    const auto nested = [&](auto&& call) {
      try {
        call();
      } catch (const MailSystemBusy&) {
        ++busy;
      }
    };
    nested([&] { other->Login(); });
    nested([&] { other->Get(Property::UnreadCount); });
    nested([&] { other->QueryMailSystem(1); });
    nested([&] { other->SessionObject(); });
    EXPECT_EQ(Value(std::string()), other->Get(Property::subject));
  };
  first->Login();
  EXPECT_EQ(4, busy);
  EXPECT_TRUE(internet.calls.empty());
  // A failure opens the gate too, and the own engine keeps nobody out.
  vim.result = {3, {}};
  EXPECT_EQ("4003 Undetermined", FailureOf([&] { first->Login(); }));
  vim.during = nullptr;
  vim.result = {};
  internet.during = [&] { first->Login(); };
  other->Login();
  EXPECT_EQ(3U, vim.calls.size());
}

// A client that comes while a foreign mail system is shut down waits as well, and going again it
// lets nobody in.
TEST(Dispatch, NobodyComesInWhileAForeignMailSystemIsShutDown) {
  TestWorld world;
  FakeBackEnd vim;
  VimMailSystem vimSystem(world.workstation, &vim);
  world.mailSystems.Add(vimSystem);
  auto first = world.NewServer();
  int refused = 0;
  bool nested = false;
  vim.during = [&] {
    if (std::exchange(nested, true)) return;
    for (int round = 0; round < 2; ++round) {
      const auto late = world.NewServer();
      late->Put(Property::mailSystem, std::int16_t{2});
      try {
        late->Login();
      } catch (const MailSystemBusy&) {
        ++refused;
      }
    }
  };
  first.reset();
  EXPECT_EQ(2, refused);
  EXPECT_FALSE(world.busy.Shut());
}

TEST(Dispatch, EachFamilyIsProbedOncePerInstance) {
  TestWorld world;
  world.workstation.libraries = {"mapi32.dll"};
  const auto server = world.NewServer();
  for (const MailSystemId id : {mail_system::kSimpleMapi, mail_system::kCserve}) {
    EXPECT_EQ(-1, server->QueryMailSystem(id));
  }
  EXPECT_EQ(1, world.workstation.probes);
  world.workstation.libraries.clear();
  EXPECT_EQ(-1, server->QueryMailSystem(8));
  EXPECT_EQ(0, world.NewServer()->QueryMailSystem(8));
}

TEST(Dispatch, PresenceTestsLookWhereTheLibrariesAre) {
  const struct {
    const char* what;
    std::function<void(testing::FakeWorkstation&)> install;
    MailSystemId system;
    int present;
  } kCases[] = {
      {"nothing", [](auto&) {}, 2, 0},
      {"VIM by the first key",
       [](auto& w) {
         w.profile["LotusMail/Program"] = "C:\\CCMAIL\\WMAIL.EXE";
         w.libraries = {"C:\\CCMAIL\\vim32.dll"};
       },
       2, -1},
      {"VIM by the second key",
       [](auto& w) {
         w.profile["cc:Mail/ProgramPath"] = "D:\\CC\\";
         w.libraries = {"D:\\CC\\vim32.dll"};
       },
       25, -1},
      {"old Active Messaging", [](auto& w) { w.objects["MAPI.Session"] = 1.0; }, 9, 0},
      {"Active Messaging", [](auto& w) { w.objects["MAPI.Session"] = 1.1; }, 9, -1},
      {"Notes", [](auto& w) { w.objects["Notes.NotesSession"] = 4.0; }, 11, -1},
      {"MHS", [](auto&) {}, 3, 0},
      {"unknown", [](auto&) {}, 77, 0},
      {"30", [](auto&) {}, 30, -1},
  };
  for (const auto& test : kCases) {
    TestWorld world;
    test.install(world.workstation);
    EXPECT_EQ(test.present, world.NewServer()->QueryMailSystem(test.system)) << test.what;
  }
}

TEST(Dispatch, ArgumentsAreCheckedBeforeTheMailSystemIsAsked) {
  TestWorld world;
  FakeBackEnd internet;
  FakeMailSystem internetSystem(MailFamily::Internet, internet);
  world.mailSystems.Add(internetSystem);
  const auto server = world.NewServer();
  EXPECT_EQ("516 No addressees were specified.", FailureOf([&] { server->Send(); }));
  for (const auto member : {&Server::LoadMessage, &Server::DeleteMessage}) {
    EXPECT_EQ("532 No valid message headers have been loaded.",
              FailureOf([&] { ((*server).*member)(); }));
  }
  world.shared.headers.resize(2);
  server->Put(Property::messageIndex, 1);
  world.shared.headers.resize(1);
  EXPECT_EQ("533 Message index is not valid.", FailureOf([&] { server->LoadMessage(); }));
  EXPECT_TRUE(internet.calls.empty());
  server->Put(Property::messageIndex, 0);
  server->DeleteMessage();
  EXPECT_EQ(1U, internet.calls.size());
}

TEST(Dispatch, AnInstanceMayChangeItsSystemWhileACallRuns) {
  TestWorld world;
  FakeBackEnd internet;
  internet.result = {3, "Login failed"};
  FakeMailSystem internetSystem(MailFamily::Internet, internet);
  world.mailSystems.Add(internetSystem);
  const auto server = world.NewServer();
  server->Put(Property::mailSystem, 10);
  internet.during = [&] { server->Put(Property::mailSystem, 0); };
  EXPECT_EQ("6003 Login failed", FailureOf([&] { server->Login(); }));
}

TEST(Dispatch, FolderListsComeAsArrayAndAsText) {
  TestWorld world;
  FakeBackEnd notes;
  NotesMailSystem notesSystem(world.workstation, &notes);
  world.mailSystems.Add(notesSystem);
  const auto server = world.NewServer();
  server->Put(Property::mailSystem, 11);
  std::int32_t count = 0;
  EXPECT_EQ("Inbox; Sent", server->GetFolderListString("", 0, "; ", 0, count));
  EXPECT_EQ(2, count);
  EXPECT_EQ(2U, server->FolderList("", 0, 0).size());
  EXPECT_EQ("530 Operation not supported by this mail system.",
            FailureOf([&] { server->CreateFolder("New"); }));
}

}  // namespace
}  // namespace quillon
