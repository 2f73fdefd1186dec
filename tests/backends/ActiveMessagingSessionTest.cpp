// The library, the session and the numbers of Active Messaging.
#include <gtest/gtest.h>

#include "ActiveMessagingWorld.h"
#include "backends/activemsg/ActiveMessagingErrorText.h"
#include "backends/activemsg/ActiveMessagingNumber.h"

namespace quillon::testing {
namespace {

class ActiveMessagingSessionTest : public ::testing::Test {
 protected:
  std::int32_t Unread() {
    std::int32_t count = 0;
    return world.backEnd.UnreadCount(world.request, count).number;
  }
  std::size_t Count(const std::string& line) { return world.program.record.Count(line); }

  ActiveMessagingWorld world;
  AutomationRecord& record = world.program.record;
};

TEST(ActiveMessagingLibraryTest, TakesVersionsFromElevenTenthsOn) {
  const struct {
    AutomationValue version;
    bool available;
  } kCases[] = {
      {1.0, false},   {1.1F, true}, {"1.1", true},   {"1.2.1", true}, {" 1.2", true},
      {"1.0", false}, {"10", true}, {"none", false}, {true, false},   {{}, false},
  };
  for (const auto& test : kCases) {
    FakeMessaging program;
    program.session->properties["version"] = test.version;
    ActiveMessagingLibrary library(program.objects);
    EXPECT_EQ(library.Available(), test.available) << Shown(test.version);
    // The verdict is kept, whatever becomes of the library.
    program.session->properties["version"] = test.available ? 1.0 : 1.2;
    library.Release();
    EXPECT_EQ(library.Available(), test.available) << Shown(test.version);
    EXPECT_EQ(program.objects.created.size(), test.available ? 2U : 1U);
  }
}

TEST(ActiveMessagingLibraryTest, IsNotThereWithoutItsObject) {
  FakeMessaging program;
  program.record.failing["Session.version"] = kUnknownName;
  EXPECT_FALSE(ActiveMessagingLibrary(program.objects).Available());
  RecordingObjects none;
  ActiveMessagingLibrary library(none);
  EXPECT_FALSE(library.Available());
  EXPECT_THROW(library.Session(), AutomationError);
  none.classes["MAPI.Session"] = nullptr;
  EXPECT_THROW(library.Session(), AutomationError);
}

TEST(ActiveMessagingLibraryTest, WithoutItAnotherBackEndServes) {
  FakeBackEnd own;
  FakeBackEnd fallback;
  FakeMessaging program;
  ActiveMessagingLibrary present(program.objects);
  EXPECT_EQ(ActiveMessagingMailSystem(present, &own, &fallback).Serving(), &own);
  program.session->properties["version"] = 1.0;
  ActiveMessagingLibrary old(program.objects);
  ActiveMessagingMailSystem system(old, &own, &fallback);
  EXPECT_FALSE(system.IsPresent());
  EXPECT_EQ(system.Serving(), &fallback);
}

// Every published error with a row of its own has a text; nothing becomes a success by its number.
TEST(ActiveMessagingNumberTest, PublishedErrorsReachTheRowsOfTheTable) {
  int mapped = 0;
  for (std::uint32_t low = 0x100; low < 0x800; ++low) {
    const auto error = static_cast<std::int32_t>(0x80040000U + low);
    const auto number = ActiveMessagingNumber(error);
    EXPECT_NE(number, kBackEndSuccess);
    if (number == error) continue;
    ++mapped;
    EXPECT_FALSE(ActiveMessagingErrorText(number).empty()) << std::hex << error;
  }
  EXPECT_EQ(mapped, 60);
  const struct {
    std::uint32_t error;
    const char* text;
  } kRows[] = {
      {0x80040111, "Login failed"},         {0x80040113, "The user aborted the operation."},
      {0x8004010F, "Invalid recipients."},  {0x80040700, "Ambiguous recipient."},
      {0x80040607, "No recipients."},       {0x80070005, "No access."},
      {0x8007000E, "Insufficient memory."}, {0x80040604, "Collision."},
      {0x80040607, "No recipients."},       {0x80020006, ""},
  };
  for (const auto& row : kRows) {
    const auto number = ActiveMessagingNumber(static_cast<std::int32_t>(row.error));
    EXPECT_EQ(ActiveMessagingErrorText(number), row.text) << std::hex << row.error;
  }
  EXPECT_NE(ActiveMessagingNumber(kBackEndSuccess), kBackEndSuccess);
}

TEST_F(ActiveMessagingSessionTest, LogsOnAsThePropertiesSay) {
  const struct {
    std::function<void(ActiveMessagingWorld&)> prepare;
    const char* logon;
  } kCases[] = {
      {[](auto&) {},
       "ProfileName='joe' profilePassword='secret' showDialog=False newSession=False "
       "parentWindow=7"},
      {[](auto& w) { w.configuration.WriteTrueFalse("MAPI", "NewSession", true); },
       "ProfileName='joe' profilePassword='secret' showDialog=False newSession=True "
       "parentWindow=7"},
      {[](auto& w) { w.instance.nativeMailDialog = kTrue; },
       "ProfileName='joe' profilePassword='secret' showDialog=True newSession=False "
       "parentWindow=7"},
      {[](auto& w) { w.instance.postOffice = "EXCH"; },
       "ProfileName='joe' profilePassword='secret' showDialog=False newSession=False "
       "parentWindow=7 profileInfo='EXCH\njoe'"},
      {[](auto& w) {
         w.instance.postOffice = "EXCH";
         w.instance.loginName = {};
       },
       "ProfileName='' profilePassword='secret' showDialog=False newSession=False "
       "parentWindow=7 profileInfo='EXCH\n\nanon'"},
  };
  for (const auto& test : kCases) {
    ActiveMessagingWorld each;
    each.shared.ownerWindow = 7;
    test.prepare(each);
    EXPECT_TRUE(each.backEnd.Login(each.request).Succeeded());
    EXPECT_TRUE(each.backEnd.Login(each.request).Succeeded());
    const auto line = std::string("call Session.Logon ") + test.logon;
    EXPECT_EQ(each.program.record.Count(line), 1U)
        << ::testing::PrintToString(each.program.record.lines);
    EXPECT_EQ(each.program.sessions, 1);
    EXPECT_EQ(each.prompt.questions, 0);
  }
}

TEST_F(ActiveMessagingSessionTest, AsksForWhatIsMissing) {
  auto& instance = world.instance;
  instance.password.clear();
  instance.loginDialog = kFalse;
  EXPECT_TRUE(world.backEnd.Login(world.request).Succeeded());  // a profile without a password
  EXPECT_TRUE(world.backEnd.Logout(world.request).Succeeded());
  EXPECT_EQ(FailureOf([&] { Unread(); }), "544 ");  // on demand, he may be asked
  world.prompt.answer = LoginPrompt::Answer::Cancelled;
  EXPECT_EQ(FailureOf([&] { Unread(); }), "522 User selected cancel in dialog.");
  EXPECT_EQ(world.program.sessions, 0);
  world.prompt.answer = LoginPrompt::Answer::Entered;
  EXPECT_EQ(Unread(), kBackEndSuccess);
  EXPECT_EQ(instance.loginName + instance.password, "askedfor");
  EXPECT_EQ(world.prompt.questions, 3);
}

TEST_F(ActiveMessagingSessionTest, IsLoggedOnOnceWhateverFails) {
  record.failing["Session.Logon"] = static_cast<std::int32_t>(0x80040111U);
  const auto failed = world.backEnd.Login(world.request);
  EXPECT_EQ(failed.number, 3);
  EXPECT_EQ(failed.text, "Login failed");
  EXPECT_EQ(world.messageBox.shown.back(),
            "ActiveMessaging Mail Error|Failed to Logon to mail system (OLE Logon): {3} Login "
            "failed");
  record.failing = {{"Session.DeliverNow", kNetworkError}};
  world.instance.forceDownload = kTrue;
  EXPECT_EQ(world.backEnd.Login(world.request).number, 23);
  EXPECT_EQ(world.program.sessions, 0);
  record.failing.clear();
  EXPECT_EQ(Unread(), kBackEndSuccess);
  EXPECT_EQ(Unread(), kBackEndSuccess);
  EXPECT_EQ(world.program.sessions, 1);
  EXPECT_EQ(Count("call Session.DeliverNow"), 2U);

  record.failing["Session.Logoff"] = kNetworkError;
  EXPECT_EQ(world.backEnd.Logout(world.request).number, 23);
  record.failing.clear();
  EXPECT_EQ(Unread(), kBackEndSuccess);
  EXPECT_EQ(world.program.sessions, 1);  // it was still logged on
  EXPECT_TRUE(world.backEnd.Logout(world.request).Succeeded());
  EXPECT_TRUE(world.backEnd.Logout(world.request).Succeeded());
  EXPECT_EQ(world.program.sessions, 0);
}

TEST_F(ActiveMessagingSessionTest, ASessionThatHasEndedByItselfIsBegunAnew) {
  EXPECT_EQ(Unread(), kBackEndSuccess);
  record.failing["Session.Logoff"] = static_cast<std::int32_t>(0x80040200U);
  EXPECT_EQ(world.backEnd.Logout(world.request).number, 114);
  EXPECT_EQ(Unread(), kBackEndSuccess);
  EXPECT_EQ(world.program.sessions, 2);
}

TEST_F(ActiveMessagingSessionTest, AClientsSessionIsUsedAndNeverEnded) {
  EXPECT_EQ(Unread(), kBackEndSuccess);  // our own, logged on
  FakeMessaging other;
  world.backEnd.SetSessionObject(other.session);
  EXPECT_EQ(world.backEnd.SessionObject(), other.session);
  other.AddMessage(*other.inbox, "new").properties["Unread"] = true;
  std::int32_t count = 0;
  EXPECT_TRUE(world.backEnd.UnreadCount(world.request, count).Succeeded());
  EXPECT_TRUE(world.backEnd.Login(world.request).Succeeded());
  EXPECT_EQ(count, 1);
  EXPECT_EQ(other.sessions, 0);
  EXPECT_EQ(world.program.sessions, 1);

  EXPECT_TRUE(world.backEnd.Logout(world.request).Succeeded());  // his is forgotten, ours ended
  EXPECT_EQ(world.backEnd.SessionObject(), world.program.session);
  world.backEnd.SetSessionObject(other.session);
  EXPECT_EQ(Unread(), kBackEndSuccess);
  world.backEnd.SetSessionObject(nullptr);
  EXPECT_EQ(Unread(), kBackEndSuccess);
  EXPECT_EQ(other.sessions, 0);
  EXPECT_EQ(world.program.sessions, 1);
}

TEST_F(ActiveMessagingSessionTest, ShutdownLeavesNothingBehind) {
  FakeMessaging other;
  EXPECT_EQ(Unread(), kBackEndSuccess);
  EXPECT_NE(world.backEnd.FolderObject(), nullptr);
  world.backEnd.SetSessionObject(other.session);
  record.failing["Session.Logoff"] = kNetworkError;
  world.backEnd.Shutdown(0);
  EXPECT_EQ(Count("call Session.Logoff"), 1U);
  EXPECT_EQ(other.record.Count("call Session.Logoff"), 0U);
  EXPECT_EQ(world.backEnd.FolderObject(), nullptr);
  record.failing.clear();
  world.backEnd.Shutdown(0);
  EXPECT_EQ(Count("call Session.Logoff"), 1U);
  const auto made = world.program.objects.created.size();
  EXPECT_EQ(Unread(), kBackEndSuccess);  // the next client's logon
  EXPECT_EQ(world.program.objects.created.size(), made + 1);
  EXPECT_EQ(world.program.sessions, 2);
}

}  // namespace
}  // namespace quillon::testing
