// How the process starts and how it ends.
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "AutomationWorld.h"
#include "automation/ClassFactory.h"
#include "automation/CommandLine.h"
#include "platform/Platform.h"
#include "ports/Network.h"

namespace quillon::testing {
namespace {

TEST(CommandLineTest, SwitchesAreKnownInAnyCaseWithEitherSign) {
  struct Case {
    std::wstring given;  // behind the program's name
    StartMode mode;
    std::wstring rest;
  };
  const std::vector<Case> cases{
      {L"", StartMode::Serve, L""},
      {L" \t ", StartMode::Serve, L""},
      {L" -Embedding", StartMode::Serve, L""},
      {L" /AUTOMATION  -embedding ", StartMode::Serve, L""},
      {L" /RegServer", StartMode::Register, L""},
      {L" \"/RegServer\"", StartMode::Register, L""},
      {L" -unregserver", StartMode::Unregister, L""},
      {L" /regserverPERUSER", StartMode::RegisterPerUser, L""},
      {L" -UnregServerPerUser", StartMode::UnregisterPerUser, L""},
      {L" /?", StartMode::ShowHelp, L""},
      {L"\t-Version", StartMode::ShowVersion, L""},
      {L" -Embedding LN=\"a  b\", PW= -x ", StartMode::Serve, L"LN=\"a  b\", PW= -x"},
      {L" LN=joe /other -Embedding  -Automation", StartMode::Serve, L"LN=joe /other"},
      {L" PW= -RegServer", StartMode::Serve, L"PW= -RegServer"},
      {L" KR=T-Embedding", StartMode::Serve, L"KR=T-Embedding"},
      {L" \"LN=joe -Embedding", StartMode::Serve, L"\"LN=joe"},
  };
  for (const std::wstring program : {L"quillon.exe", L"\"C:\\Program Files\\q.exe\"", L"\"\""}) {
    for (const Case& c : cases) {
      const CommandLine line = ParseCommandLine(program + c.given);
      EXPECT_EQ(line.mode, c.mode);
      EXPECT_EQ(line.rest, c.rest);
      EXPECT_EQ(line.bare, c.given.find_first_not_of(L" \t") == std::wstring::npos);
    }
  }
}

TEST(CommandLineTest, CommandsTakeWhatFollows) {
  const auto line = ParseCommandLine(L"q -CONFIGURE *  SMTPUser \"a  \\\"b\" \"\" /RegServer");
  EXPECT_EQ(line.mode, StartMode::Configure);
  EXPECT_EQ(line.arguments,
            (std::vector<std::wstring>{L"*", L"SMTPUser", L"a  \"b", L"", L"/RegServer"}));
  EXPECT_TRUE(ParseCommandLine(L"q /Configure").arguments.empty());
}

TEST(CommandLineTest, ASwitchOfNobodysIsNamed) {
  for (const auto& [given, named] :
       std::vector<std::pair<std::wstring, std::wstring>>{{L"q /RegSevrer", L"/RegSevrer"},
                                                          {L"q -", L"-"},
                                                          {L"q --version", L"--version"},
                                                          {L"q /RegServer /PerUser", L"/PerUser"},
                                                          {L"q /what /RegServer", L"/what"}}) {
    const CommandLine line = ParseCommandLine(given);
    EXPECT_EQ(line.mode, StartMode::Refuse);
    EXPECT_EQ(line.unknown, named);
  }
}

class ProcessTest : public ::testing::Test {
 protected:
  ProcessTest() { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
  ~ProcessTest() override { CoUninitialize(); }

  // Until the time is over, or until it is enough.
  void Dispatch(
      unsigned milliseconds, const std::function<bool()>& enough = [] { return false; }) {
    const UINT_PTR timer = SetTimer(nullptr, 0, milliseconds, nullptr);
    MSG message;
    while (!enough() && GetMessageW(&message, nullptr, 0, 0) > 0) {
      if (message.message == WM_TIMER && message.wParam == timer) break;
      DispatchMessageW(&message);
    }
    KillTimer(nullptr, timer);
  }

  void Run() {
    lifetime_.Run(*loop_, [this](const std::string& text) { failures_.push_back(text); });
  }

  std::unique_ptr<NetworkLoop> loop_ = MakeNetworkLoop();
  ProcessLifetime lifetime_{{20, 20, 20}};
  int revoked_ = 0;
  std::vector<std::string> failures_;
};

TEST_F(ProcessTest, EndsWhenNoClientComes) {
  lifetime_.Serve([this] { ++revoked_; });
  Run();
  EXPECT_TRUE(lifetime_.Ended());
  EXPECT_EQ(revoked_, 1);
}

TEST_F(ProcessTest, AFailureThatNobodyTookIsToldAndTheClientsAreServedOn) {
  lifetime_.Serve([] {});
  bool served = false;
  loop_->Post([] { throw std::runtime_error("one"); });
  loop_->Post([] { throw 2; });
  loop_->Post([&] { served = true; });
  Run();
  EXPECT_TRUE(served);
  EXPECT_EQ(failures_, (std::vector<std::string>{"one", "an unknown exception"}));
}

TEST_F(ProcessTest, StaysWhileAnObjectOrALockIsThere) {
  auto factory = ComPtr<IClassFactory>::Attach(new ClassFactory(lifetime_, L"Test", nullptr));
  lifetime_.Serve([this] { ++revoked_; });
  {
    const ProcessReference object(lifetime_);
    factory->LockServer(TRUE);
    Dispatch(100);
  }
  Dispatch(100);
  EXPECT_EQ(revoked_, 0);
  EXPECT_EQ(factory->LockServer(FALSE), S_OK);
  EXPECT_EQ(factory->LockServer(FALSE), E_UNEXPECTED);  // one too many does no harm
  Run();
  EXPECT_EQ(revoked_, 1);
}

// The class object is revoked, but the request of a client is already on its way.
TEST_F(ProcessTest, AClientThatComesAtTheLastMomentIsServed) {
  std::optional<ProcessReference> late;
  lifetime_.Serve([&] {
    ++revoked_;
    late.emplace(lifetime_);
  });
  Dispatch(10000, [this] { return revoked_ == 1; });
  ASSERT_EQ(revoked_, 1);
  Dispatch(100);
  EXPECT_FALSE(lifetime_.Ended());
  late.reset();
  Run();
  EXPECT_TRUE(lifetime_.Ended());
  EXPECT_EQ(revoked_, 1);
}

TEST_F(ProcessTest, TheEndRefusesNewWork) {
  auto factory =
      ComPtr<IClassFactory>::Attach(new ClassFactory(lifetime_, L"Test", []() -> IUnknown* {
        ADD_FAILURE();
        return nullptr;
      }));
  lifetime_.Serve([this] { ++revoked_; });
  const ProcessReference client(lifetime_);
  const HWND window = FindWindowExW(HWND_MESSAGE, nullptr, L"QuillonServerProcess", nullptr);
  PostMessageW(window != nullptr ? window : FindWindowW(L"QuillonServerProcess", nullptr), WM_CLOSE,
               0, 0);
  Run();  // although a client is there
  void* object = nullptr;
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, &object), CO_E_SERVER_STOPPING);
  EXPECT_EQ(factory->LockServer(TRUE), CO_E_SERVER_STOPPING);
  EXPECT_EQ(revoked_, 1);
}

}  // namespace
}  // namespace quillon::testing
