// What the adapter does around the sessions: login data, routing, texts, boxes, configuration, log.
#include <gtest/gtest.h>

#include "InternetWorld.h"
#include "Peers.h"
#include "core/WholeFile.h"

namespace quillon::testing {
namespace {

class InternetBackEndTest : public ::testing::Test {
 protected:
  InternetBackEndTest() {
    world.network.accept = [this] { return std::make_shared<ObligingPeer>(servePop); };
  }

  InternetWorld world;
  InternetBackEnd& backEnd = world.backEnd;
  MailRequest& request = world.request;
  bool servePop = true;
};

TEST_F(InternetBackEndTest, EachProtocolRefusesWhatOnlyTheOtherHas) {
  std::string resolved;
  std::int32_t count = 0;
  const std::function<void()> kSending[] = {
      [&] { backEnd.Send(request); },
      [&] { backEnd.ResolveName(request, "ann", false, resolved); },
  };
  const std::function<void()> kReceiving[] = {
      [&] { backEnd.LoadMessageHeaders(request); },
      [&] { backEnd.LoadMessageIdentifiers(request); },
      [&] { backEnd.LoadMessage(request); },
      [&] { backEnd.DeleteMessage(request); },
      [&] { backEnd.UnreadCount(request, count); },
      [&] { backEnd.MoveCopyMessage(request, "Inbox", true); },
  };
  world.instance.postOffice.clear();  // the refusal comes before the login data is looked for
  world.instance.smtpServer.clear();
  world.instance.mailSystem = mail_system::kPop3;
  for (const auto& call : kSending) EXPECT_EQ(CodeOf(call), 530);
  world.instance.mailSystem = mail_system::kSmtp;
  for (const auto& call : kReceiving) EXPECT_EQ(CodeOf(call), 530);
  EXPECT_TRUE(world.prompt.asked.empty());

  world.instance.mailSystem = mail_system::kInternet;
  try {
    backEnd.MoveCopyMessage(request, "Inbox", false);
    FAIL();
  } catch (const ServerError& error) {
    EXPECT_EQ(error.Code(), 530);
    EXPECT_EQ(error.Text(), "Cannot move or copy a message with POP. (POPMoveMessage)");
  }
}

TEST_F(InternetBackEndTest, MissingLoginDataIsAskedForAndReadBack) {
  auto& instance = world.instance;
  instance.postOffice.clear();
  EXPECT_EQ(CodeOf([&] { backEnd.LoadMessageHeaders(request); }), 544);
  world.prompt.answer = LoginPrompt::Answer::Cancelled;
  EXPECT_EQ(CodeOf([&] { backEnd.LoadMessageHeaders(request); }), 522);
  world.prompt.answer = LoginPrompt::Answer::Entered;
  world.prompt.entered = {"host.example", "", "pw"};
  EXPECT_EQ(CodeOf([&] { backEnd.LoadMessageHeaders(request); }), 544);
  world.prompt.entered.name = "ann";
  EXPECT_EQ(backEnd.LoadMessageHeaders(request).number, kBackEndSuccess);
  EXPECT_EQ(instance.postOffice + instance.loginName + instance.password, "host.exampleannpw");
  EXPECT_EQ(world.prompt.asked.size(), 4U);

  instance.loginDialog = kFalse;
  world.shared.message.from.clear();
  EXPECT_EQ(CodeOf([&] { backEnd.Send(request); }), 544);
  EXPECT_EQ(world.prompt.asked.size(), 4U);
}

TEST_F(InternetBackEndTest, LoginGoesWhereThereIsDataToLogInWith) {
  world.instance.smtpServer.clear();
  EXPECT_EQ(backEnd.Login(request).number, kBackEndSuccess);  // POP alone: one connection
  EXPECT_EQ(world.network.connects, 1U);
  EXPECT_EQ(backEnd.Logout(request).number, kBackEndSuccess);

  servePop = false;
  world.instance.smtpServer = "smtp.example";
  world.instance.postOffice.clear();
  EXPECT_EQ(backEnd.Login(request).number, kBackEndSuccess);  // SMTP alone
  EXPECT_EQ(world.network.connects, 2U);
}

TEST_F(InternetBackEndTest, TheServerThatWorkedIsRemembered) {
  servePop = false;
  EXPECT_EQ(backEnd.Send(request).number, kBackEndSuccess);
  EXPECT_EQ(world.configuration.ReadString("Internet", "SMTPServer"), "smtp.example");
  world.instance.smtpServer.clear();
  EXPECT_EQ(backEnd.Send(request).number, kBackEndSuccess);
  EXPECT_EQ(world.network.connects, 1U);
  world.instance.smtpServer = "other.example";
  EXPECT_EQ(backEnd.Send(request).number, kBackEndSuccess);
  EXPECT_EQ(world.network.connects, 2U);
}

TEST_F(InternetBackEndTest, FailuresAreShownWhenErrorDisplayIsOn) {
  world.network.weather = FakeNetwork::Weather::NoSuchHost;
  EXPECT_EQ(backEnd.Send(request).number, 2);
  EXPECT_TRUE(world.box.shown.empty());
  world.instance.errorDisplay = kTrue;
  EXPECT_EQ(backEnd.LoadMessageHeaders(request).number, 2);
  EXPECT_EQ(backEnd.Send(request).number, 2);
  EXPECT_EQ(
      world.box.shown,
      (std::vector<std::string>{
          "POP Mail Error | Failed to Logon to POP server: {2} Could not connect to POP server.",
          "SMTP Mail Error | Failed to Logon to SMTP server.: {2}"}));
}

TEST_F(InternetBackEndTest, ConnectingKeepsItsDeadlineWhateverFails) {
  using Weather = FakeNetwork::Weather;
  auto& network = world.network;
  const struct {
    Weather weather;
    const char* host;
    std::int32_t result;
    TickCount elapsed;
    std::size_t connects;
  } kCases[] = {
      {Weather::NoAnswer, "pop.example", 2, 30000, 0},  // the name is never found
      {Weather::NoAnswer, "192.0.2.1", 2, 30000, 1},
      {Weather::NoSuchHost, "pop.example", 2, 0, 0},
      {Weather::NoSuchHost, "192.0.02.1", 2, 0, 0},  // not a number, so a name
      {Weather::NoSockets, "192.0.2.1", 4, 200, 11},
  };
  for (const auto& test : kCases) {
    network.weather = test.weather;
    world.instance.postOffice = test.host;
    network.connects = 0;
    const auto start = network.Now();
    EXPECT_EQ(backEnd.LoadMessageHeaders(request).number, test.result) << test.host;
    EXPECT_EQ(network.Now() - start, test.elapsed) << test.host;
    EXPECT_EQ(network.connects, test.connects) << test.host;
  }
}

TEST_F(InternetBackEndTest, EveryAddressOfAHostIsTried) {
  int refusals = 2;
  world.network.addresses.resize(3);
  world.network.accept = [&]() -> std::shared_ptr<FakePeer> {
    if (refusals-- > 0) return nullptr;
    return std::make_shared<ObligingPeer>(true);
  };
  EXPECT_EQ(backEnd.LoadMessageHeaders(request).number, kBackEndSuccess);
  EXPECT_EQ(world.network.connects, 3U);
}

TEST_F(InternetBackEndTest, ACallFromInsideAWaitIsRefused) {
  std::int32_t code = 0;
  world.network.Post([&] { code = CodeOf([&] { backEnd.LoadMessageHeaders(request); }); });
  EXPECT_EQ(backEnd.LoadMessageHeaders(request).number, kBackEndSuccess);
  EXPECT_EQ(code, 540);
  EXPECT_EQ(backEnd.LoadMessageHeaders(request).number, kBackEndSuccess);
}

TEST_F(InternetBackEndTest, TheLogTellsTheConversationButNoPassword) {
  world.log.WriteDebug("before the start");
  world.log.Start();
  EXPECT_EQ(backEnd.LoadMessageHeaders(request).number, kBackEndSuccess);
  world.shared.headers.clear();
  EXPECT_EQ(CodeOf([&] { backEnd.LoadMessage(request); }), 533);
  backEnd.Shutdown(0);
  world.log.Stop();
  world.log.WriteDebug("after the stop");
  EXPECT_EQ(ContentOf(*world.files, world.folder.Path("POPDUMP.TXT")),
            "2026-11-01 08:05:09 Attempting to connect... \r\n"
            "+OK ready\r\n"
            "POP Tx: USER joe\r\n"
            "+OK\r\n"
            "POP Tx: PASS ****\r\n"
            "+OK\r\n"
            "POP Tx: STAT\r\n"
            "+OK 1 100\r\n"
            "POP Tx: TOP 1 0\r\n"
            "+OK\r\n"
            "Subject: obliging\r\n"
            "\r\n"
            ".\r\n"
            "POP Tx: QUIT\r\n"
            "+OK\r\n"
            "POP socket closed.\r\n");
}

TEST_F(InternetBackEndTest, TheLogTellsWhatAMessageIsMadeOf) {
  servePop = false;
  const auto page = world.folder.Path("page.htm");
  ASSERT_TRUE(WriteWholeFile(*world.files, page, BytesOf("<p>")));
  world.shared.message.alternatives = {{page, "text/html"}};
  world.shared.message.attachments = {{page, "page.htm"}};
  world.log.Start();
  EXPECT_EQ(backEnd.Send(request).number, kBackEndSuccess);
  world.log.Stop();
  const auto log = ContentOf(*world.files, world.folder.Path("POPDUMP.TXT"));
  std::size_t at = 0;
  for (const auto* const line :
       {"--- Starting SMTP Send Method 2026-11-01 08:05:09 ---", "Encoding alternatives... ",
        "Encoding attachments... ", "Attempting to connect... ", "Sending message... ",
        "Sending alternatives... ", "Sending attachments... ", "Sending terminator... ",
        "Message sent successfully! "}) {
    at = log.find(line, at);
    EXPECT_NE(at, std::string::npos) << line << log;
  }
}

TEST_F(InternetBackEndTest, ShutdownDoesNotWaitForASilentServer) {
  EXPECT_EQ(backEnd.LoadMessageHeaders(request).number, kBackEndSuccess);
  world.network.accept = [] { return std::make_shared<MutePeer>(); };
  EXPECT_EQ(backEnd.Send(request).number, 27);
  const auto start = world.network.Now();
  backEnd.Shutdown(0);
  EXPECT_LE(world.network.Now() - start, 1000U);
}

}  // namespace
}  // namespace quillon::testing
