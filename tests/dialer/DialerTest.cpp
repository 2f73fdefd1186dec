#include <algorithm>
#include <condition_variable>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <stdexcept>
#include <vector>

#include "dialer/Dialer.h"
#include "platform/Platform.h"
#include "support/TestWorld.h"

namespace quillon {
namespace {

using testing::FailureOf;
using testing::FakeWorkstation;
using testing::RecordingMessageBox;

// One line. What it is to answer is told before the call; a dial may wait to be hung up.
class FakeRas final : public Ras {
 public:
  std::uint32_t Dial(RasLayout layout, const RasDialParameters& parameters,
                     std::atomic<RasHandle>& connection) override {
    std::unique_lock lock(mutex_);
    dialled = parameters.entryName + "|" + parameters.phoneNumber + "|" + parameters.userName +
              "|" + parameters.password + "|" + parameters.domain;
    if (layout == RasLayout::Windows95) dialled += "|95";
    changed_.wait(lock, [this] { return mayBegin; });
    connection = handle;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !untilHungUp || hungUp.contains(handle); });
    return number;
  }
  std::uint32_t HangUp(RasHandle connection) override {
    const std::lock_guard lock(mutex_);
    ++hungUp[connection];
    changed_.notify_all();
    return hangUpNumber;
  }
  std::uint32_t EnumConnections(RasLayout, std::vector<RasConnection>& connections) override {
    if (listed.empty()) throw std::runtime_error("nobody has foreseen this");
    if (listed[0].handle != 0) connections = listed;
    return listNumber;
  }
  std::uint32_t ConnectStatus(RasLayout, RasHandle) override {
    return statusQueries++ < statusQueriesUntilFree ? 0 : ras::kInvalidHandle;
  }
  std::uint32_t ErrorString(std::uint32_t code, std::string& text) override {
    if (textNumber == ras::kSuccess && code == 676) text = "The line is busy.";
    if (textNumber == ras::kSuccess && code == 631) text = "Hung up.";
    return textNumber;
  }

  void Begin() {
    const std::lock_guard lock(mutex_);
    mayBegin = true;
    changed_.notify_all();
  }
  void AwaitHangUp() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return hungUp.contains(handle); });
  }

  std::string dialled;
  RasHandle handle = 71;
  std::uint32_t number = 0;
  std::uint32_t hangUpNumber = 0;
  std::uint32_t listNumber = 0;
  std::uint32_t textNumber = 0;
  bool mayBegin = true;
  bool untilHungUp = false;
  std::map<RasHandle, int> hungUp;
  std::vector<RasConnection> listed{{0, {}}};
  int statusQueries = 0;
  int statusQueriesUntilFree = 1;

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
};

class FakeLibrary final : public RasLibrary {
 public:
  std::shared_ptr<Ras> Load() override { return present ? ras : nullptr; }

  std::shared_ptr<FakeRas> ras = std::make_shared<FakeRas>();
  bool present = true;
};

// Of a program that is told to end.
class EndingLoop final : public EventLoop {
 public:
  TickCount Now() const override { return 0; }
  bool RunUntil(const std::function<bool()>&, TickCount) override { return false; }
  void RunPending() override {}
  void Post(std::function<void()>) override {}
};

class DialerTest : public ::testing::Test {
 protected:
  SharedState shared;
  std::unique_ptr<NetworkLoop> loop = MakeNetworkLoop();
  FakeLibrary library;
  FakeRas& ras = *library.ras;
  FakeWorkstation workstation;
  RecordingMessageBox box;
  DialerEnvironment environment{shared, *loop, library, workstation, box, TickCount{60000}, {}};
};

TEST_F(DialerTest, TheSystemDecidesTheKindAndTheLayout) {
  const struct {
    SystemFamily family;
    int kind;
    std::string dialled;
  } kCases[] = {{SystemFamily::WindowsNt, 5, "Office|12-34|joe|secret|HEAD"},
                {SystemFamily::Windows95, 95, "Office|12-34|joe|secret|HEAD|95"}};
  for (const auto& test : kCases) {
    workstation.system.family = test.family;
    Dialer dialer(environment);
    EXPECT_EQ(dialer.OSType(), test.kind);
    dialer.Put(Dialer::Field::EntryName, "Office");
    dialer.Put(Dialer::Field::PhoneNumber, "12-34");
    dialer.Put(Dialer::Field::UserName, "joe");
    dialer.Put(Dialer::Field::Password, "secret");
    dialer.Put(Dialer::Field::Domain, "HEAD");
    dialer.Dial();
    EXPECT_EQ(ras.dialled, test.dialled);
  }
  workstation.system.family = SystemFamily::Windows16;
  EXPECT_EQ(FailureOf([this] { Dialer none(environment); }),
            "550 Cannot use RAS Dialer on 16-bit Windows.");
  EXPECT_EQ(shared.dialerCount, 0);
}

TEST_F(DialerTest, AFailedDialSaysWhyAndLeavesNoConnection) {
  const struct {
    std::uint32_t number;
    std::uint32_t textNumber;
    std::string failure;
    std::string shown;
  } kCases[] = {
      {676, 0, "7676 RAS Error: ", "The line is busy."},
      {691, 0,
       "7691 RAS Error: ", "Undetermined error, RAS could not provide further information."},
      {691, ras::kInvalidParameter,
       "7691 RAS Error: ", "Undetermined error, RAS could not provide further information."},
      {691, ras::kBufferTooSmall, "7691 RAS Error: ",
       "Call To RasGetErrorString Failed. Error Retrieving The Error String!!!"},
      {1, ras::kInvalidFunction,
       "7001 RAS Error: ", "Function Is Not Supported On This Version of Windows."},
      {5, 5, "7005 RAS Error: ",
       "Unexpected Error. See WIN32 SDK More Information On This Error Number!!!"},
      {0x80070005, 87,
       "7000 RAS Error: ", "Undetermined error, RAS could not provide further information."},
      {ras::kNoNumber, 0, "7000 ", "Undetermined error in Dialer object Dial method."},
  };
  for (const auto& test : kCases) {
    for (const RasHandle handle : {0U, 71U}) {
      ras.number = test.number;
      ras.textNumber = test.textNumber;
      ras.handle = handle;
      ras.hungUp.clear();
      ras.statusQueries = 0;
      shared.errorDisplay = handle == 0 ? kFalse : kTrue;
      box.shown.clear();
      Dialer dialer(environment);
      EXPECT_EQ(FailureOf([&] { dialer.Dial(); }), test.failure + test.shown);
      EXPECT_EQ(ras.hungUp, handle == 0 ? (std::map<RasHandle, int>{})
                                        : (std::map<RasHandle, int>{{handle, 1}}));
      EXPECT_EQ(ras.statusQueries, handle == 0 ? 0 : 2);
      EXPECT_EQ(box.shown, handle == 0 ? std::vector<std::string>{}
                                       : std::vector<std::string>{"Dialer Error|" + test.shown});
      EXPECT_EQ(FailureOf([&] { dialer.HangUp(); }), "");
      EXPECT_EQ(ras.hungUp.size(), handle == 0 ? 0U : 1U);
    }
  }
}

TEST_F(DialerTest, HangUpClosesItsConnectionOnce) {
  Dialer dialer(environment);
  ras.listed = {{9, "Somebody's"}, {71, "Office"}, {0, "no handle"}};
  dialer.HangUp();
  EXPECT_EQ(dialer.ActiveEntryName(), "Somebody's");
  dialer.Dial();
  EXPECT_EQ(dialer.ActiveEntryName(), "Office");
  ras.statusQueriesUntilFree = 1000000;
  environment.linePatience = 20;  // the wait has an end of its own
  dialer.HangUp();
  dialer.HangUp();
  EXPECT_EQ(ras.hungUp, (std::map<RasHandle, int>{{71, 1}}));
  ras.listed = {{0, {}}};
  EXPECT_EQ(dialer.ActiveEntryName(), "");
}

TEST_F(DialerTest, WhatCannotBeHungUpCanBeTriedAgainAndWhatIsGoneCannot) {
  Dialer dialer(environment);
  dialer.Dial();
  const auto hungUp = [&](std::uint32_t number) {
    ras.hangUpNumber = number;
    return FailureOf([&] { dialer.HangUp(); }).substr(0, 16);
  };
  EXPECT_EQ(hungUp(ras::kNoNumber), "7000 Undetermine");
  EXPECT_EQ(hungUp(676), "7676 RAS Error: ");
  EXPECT_EQ(hungUp(ras::kInvalidHandle), "7006 RAS Error: ");
  EXPECT_EQ(hungUp(676), "");
  EXPECT_EQ(ras.hungUp[71], 3);
}

TEST_F(DialerTest, TheListFailsWithTheTextOfItsPart) {
  const Dialer dialer(environment);
  const auto listed = [&](std::uint32_t number) {
    ras.listNumber = number;
    return FailureOf([&] { dialer.ActiveEntryName(); });
  };
  EXPECT_EQ(listed(676), "7676 RAS Error: The line is busy.");
  EXPECT_EQ(listed(ras::kNoNumber),
            "7000 Undetermined error in Dialer object getting current RAS connections.");
  ras.listed.clear();
  EXPECT_EQ(listed(0), "7000 Undetermined error in Dialer object ActiveEntryName property.");
}

TEST_F(DialerTest, WithoutTheLibraryThereIsAnObjectAndNoMore) {
  const std::string missing =
      "7000 RASAPI32.DLL could not be loaded.  Remote Access Service may not be installed.";
  library.present = false;
  shared.errorDisplay = kTrue;
  Dialer dialer(environment);
  EXPECT_EQ(dialer.DialerAvailable(), kFalse);
  EXPECT_EQ(FailureOf([&] { dialer.Dial(); }), missing);
  EXPECT_EQ(FailureOf([&] { dialer.HangUp(); }), missing);
  EXPECT_EQ(FailureOf([&] { dialer.ActiveEntryName(); }), missing);
  EXPECT_EQ(box.shown.size(), 3U);
  library.present = true;
  EXPECT_EQ(dialer.DialerAvailable(), kTrue);
  EXPECT_EQ(FailureOf([&] { dialer.Dial(); }), "");
}

// Both before the connection has its handle and after that.
TEST_F(DialerTest, OtherCallsAreServedDuringADialAndOneEndsIt) {
  for (const bool known : {false, true}) {
    ras.mayBegin = known;
    ras.untilHungUp = true;
    ras.number = known ? 676 : 0;  // the line is there in the same moment
    ras.hungUp.clear();
    Dialer dialer(environment);
    std::vector<std::string> meanwhile;
    loop->Post([&] {
      meanwhile.push_back(FailureOf([&] { dialer.Dial(); }).substr(0, 4));
      meanwhile.push_back(FailureOf([&] { dialer.HangUp(); }));
      ras.Begin();
    });
    EXPECT_EQ(FailureOf([&] { dialer.Dial(); }),
              known ? "7676 RAS Error: The line is busy." : "7631 RAS Error: Hung up.");
    EXPECT_EQ(meanwhile, (std::vector<std::string>{"7600", ""}));
    EXPECT_GE(ras.hungUp[71], 1);
    ras.untilHungUp = false;
    ras.number = 0;
    EXPECT_EQ(FailureOf([&] { dialer.Dial(); }), "");
  }
}

// The library returns at once, when it is hung up, or long after everything else has gone.
TEST_F(DialerTest, TheEndOfTheProgramLeavesNoConnection) {
  EndingLoop ending;
  DialerEnvironment last{shared, ending, library, workstation, box, TickCount{20}, {}};
  const auto line = library.ras;
  for (const bool returns : {true, false}) {
    line->mayBegin = returns;
    line->untilHungUp = false;
    line->hungUp.clear();
    last.partingPatience = std::chrono::milliseconds(returns ? 60000 : 1);
    EXPECT_EQ(FailureOf([&] { Dialer(last).Dial(); }),
              "7000 Undetermined error in Dialer object Dial method.");
    line->Begin();
    line->AwaitHangUp();
    EXPECT_EQ(line->hungUp.at(71), 1);
  }
}

// As long as there is an object that could show it or put it.
TEST_F(DialerTest, BoxesFollowTheErrorDisplayThatWasPutLast) {
  testing::TestWorld world;
  DialerEnvironment here{world.shared, *loop, library, workstation, box, TickCount{20}, {}};
  ras.number = 676;
  const auto boxes = [&](Dialer& dialer) {
    box.shown.clear();
    FailureOf([&] { dialer.Dial(); });
    return box.shown.size();
  };
  {
    auto first = world.NewServer();
    const auto second = world.NewServer();
    Dialer dialer(here);
    first->Put(Property::ErrorDisplay, true);
    EXPECT_EQ(boxes(dialer), 1U);
    first.reset();
    EXPECT_EQ(boxes(dialer), 1U);
    second->Put(Property::ErrorDisplay, false);
    EXPECT_EQ(boxes(dialer), 0U);
    second->Put(Property::ErrorDisplay, true);
  }
  auto later = std::make_unique<Dialer>(here);
  EXPECT_EQ(boxes(*later), 0U);
  world.NewServer()->Put(Property::ErrorDisplay, true);
  EXPECT_EQ(boxes(*later), 1U);
  later.reset();
  Dialer last(here);
  EXPECT_EQ(boxes(last), 0U);
}

}  // namespace
}  // namespace quillon
