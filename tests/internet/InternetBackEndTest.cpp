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
  std::int32_t count = 0;
  const std::function<void()> kSending[] = {
      [&] { backEnd.Send(request); },
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
  EXPECT_EQ(world.configuration.ReadString("Internet", "POPServer"), "host.example");
  instance.postOffice.clear();
  world.prompt.answer = LoginPrompt::Answer::Cancelled;
  EXPECT_EQ(CodeOf([&] { backEnd.LoadMessage(request); }), 522);
  EXPECT_EQ(world.prompt.offered.server, "host.example");
  world.prompt.asked.clear();

  instance.loginDialog = kFalse;
  world.shared.message.from.clear();
  EXPECT_EQ(CodeOf([&] { backEnd.Send(request); }), 544);
  EXPECT_TRUE(world.prompt.asked.empty());
}

TEST_F(InternetBackEndTest, OthersAreServedWhileTheUserIsAsked) {
  auto others = world.instance;
  MailRequest other{others, world.shared};
  world.instance.postOffice.clear();
  world.prompt.whileAsked = [&] {
    EXPECT_EQ(backEnd.LoadMessageHeaders(other).number, kBackEndSuccess);
  };
  EXPECT_EQ(CodeOf([&] { backEnd.LoadMessageHeaders(request); }), 544);
  EXPECT_EQ(world.prompt.asked.size(), 1U);
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
  // Offered to the user, and never taken without him.
  world.instance.smtpServer.clear();
  EXPECT_EQ(CodeOf([&] { backEnd.Send(request); }), 544);
  EXPECT_EQ(world.prompt.offered.server, "smtp.example");
  EXPECT_EQ(world.network.connects, 1U);
  // Another program may have changed the file.
  world.configuration.WriteString("Internet", "SMTPServer", "changed.example");
  world.instance.smtpServer = "smtp.example";
  EXPECT_EQ(backEnd.Send(request).number, kBackEndSuccess);
  EXPECT_EQ(world.configuration.ReadString("Internet", "SMTPServer"), "smtp.example");
  world.instance.mailSystem = mail_system::kPop3;
  std::string resolved;
  EXPECT_EQ(backEnd.ResolveName(request, "ann", false, resolved).number, kBackEndSuccess);
  EXPECT_EQ(world.network.connects, 1U);
}

// Message numbers hold for one session. What another program has deleted meanwhile moves those
// behind it.
TEST_F(InternetBackEndTest, AMessageIsFoundAgainInAnotherSession) {
  auto& headers = world.shared.headers;
  for (const bool identified : {false, true}) {
    auto mailbox = std::make_shared<MailboxPeer::Mailbox>();
    mailbox->messages = {{"u1", "Subject: one\r\nMessage-ID: <1@x>\r\n\r\n1\r\n"},
                         {"u2", "Subject: two\r\nStatus: O\r\n\r\n2\r\n"},
                         {"u3", "Subject: three\r\nMessage-ID: <3@x>\r\n\r\n3\r\n"},
                         {"u4", "Subject: four\r\n\r\n4\r\n"}};
    world.network.accept = [&] { return std::make_shared<MailboxPeer>(mailbox); };
    const auto load = identified ? &InternetBackEnd::LoadMessageIdentifiers
                                 : &InternetBackEnd::LoadMessageHeaders;
    EXPECT_TRUE((backEnd.*load)(request).Succeeded());
    ASSERT_EQ(headers.size(), 4U);
    backEnd.Logout(request);
    mailbox->messages.erase(mailbox->messages.begin());
    mailbox->messages[0].text.replace(14, 9, "Status: RO");
    world.instance.messageIndex = 1;
    EXPECT_TRUE(backEnd.LoadMessage(request).Succeeded());
    EXPECT_EQ(world.shared.message.subject, "two");
    world.instance.messageIndex = 2;
    EXPECT_TRUE(backEnd.DeleteMessage(request).Succeeded());
    world.instance.messageIndex = 0;
    EXPECT_EQ(CodeOf([&] { backEnd.LoadMessage(request); }), 532);
    EXPECT_EQ(CodeOf([&] { backEnd.DeleteMessage(request); }), 532);
    EXPECT_TRUE(backEnd.Logout(request).Succeeded());
    ASSERT_EQ(mailbox->messages.size(), 2U);
    EXPECT_EQ(mailbox->messages[0].identifier + mailbox->messages[1].identifier, "u2u4");
    // Nothing of the table is looked for in another mailbox, where the same names may mean others.
    world.instance.messageIndex = 3;
    world.instance.loginName = "ann";
    const auto connects = world.network.connects;
    EXPECT_EQ(CodeOf([&] { backEnd.DeleteMessage(request); }), 532);
    EXPECT_EQ(world.network.connects, connects);
    world.instance.loginName = "joe";
    mailbox->knowsIdentifiers = false;  // any more
    EXPECT_EQ(CodeOf([&] { backEnd.DeleteMessage(request); }), identified ? 532 : 0);
    backEnd.Logout(request);
  }
}

TEST_F(InternetBackEndTest, ALostDeletionIsToldOnce) {
  auto mailbox = std::make_shared<MailboxPeer::Mailbox>();
  std::shared_ptr<MailboxPeer> peer;
  world.network.accept = [&] { return peer = std::make_shared<MailboxPeer>(mailbox); };
  const std::function<std::int32_t()> kNextCalls[] = {
      [&] { return backEnd.Logout(request).number; },
      [&] { return backEnd.LoadMessageHeaders(request).number; },
      [&] {
        world.instance.loginName = "ann";  // the server still keeps the old session
        return backEnd.LoadMessageHeaders(request).number;
      },
  };
  for (const auto& next : kNextCalls) {
    for (const bool lost : {true, false}) {
      mailbox->messages = {{"u1", "Subject: one\r\n\r\n"}, {"u2", "Subject: two\r\n\r\n"}};
      world.instance.loginName = "joe";
      ASSERT_TRUE(backEnd.LoadMessageHeaders(request).Succeeded());
      ASSERT_TRUE(backEnd.DeleteMessage(request).Succeeded());
      mailbox->refusesToQuit = lost && &next == &kNextCalls[2];
      if (lost && &next != &kNextCalls[2]) peer->Hangup();
      EXPECT_EQ(next(), lost ? 20 : kBackEndSuccess);
      mailbox->refusesToQuit = false;
      EXPECT_EQ(next(), kBackEndSuccess);
      backEnd.Logout(request);
      EXPECT_EQ(mailbox->messages.size(), lost ? 2U : 1U);
    }
  }
}

// A message that was sent before leaves nothing in the one that is forwarded.
TEST_F(InternetBackEndTest, ALoadedMessageReplacesTheWholeOfTheOneBefore) {
  world.shared.message.alternatives = {{"page.htm", "text/html"}};
  world.shared.message.xHeaders = {{"Kind", "own"}};
  world.shared.message.bcc = {"boss@example.org"};
  EXPECT_TRUE(backEnd.LoadMessageHeaders(request).Succeeded());
  EXPECT_TRUE(backEnd.LoadMessage(request).Succeeded());
  EXPECT_TRUE(world.shared.message.alternatives.empty());
  EXPECT_TRUE(world.shared.message.xHeaders.empty());
  EXPECT_TRUE(world.shared.message.bcc.empty());
}

TEST_F(InternetBackEndTest, HeadersAreReadAsScriptOrConfigurationFileSay) {
  auto mailbox = std::make_shared<MailboxPeer::Mailbox>();
  world.network.accept = [&] { return std::make_shared<MailboxPeer>(mailbox); };
  mailbox->messages.assign(1, {"u", "Subject: =?utf-8?q?=C3=A9?=\r\nX: \xC3\xA9\r\n\r\n1\r\n"});
  const auto read = [&] {
    EXPECT_TRUE(backEnd.LoadMessageHeaders(request).Succeeded());
    EXPECT_TRUE(backEnd.LoadMessage(request).Succeeded());
    const auto& message = world.shared.message;
    EXPECT_EQ(world.shared.headers.at(0).subject, message.subject);
    return message.subject + " " + message.rawHeaders.substr(message.rawHeaders.find('X'));
  };
  EXPECT_EQ(read(), "é X: é\r\n");
  ASSERT_TRUE(world.configuration.WriteString("Server pop.example", "RawHeaders", "TRUE"));
  EXPECT_EQ(read(), "=?utf-8?q?=C3=A9?= X: Ã©\r\n");
  world.instance.access.rawHeaders = kFalse;
  EXPECT_EQ(read(), "é X: é\r\n");
}

TEST_F(InternetBackEndTest, AWinmailDatIsOpenedAsScriptOrConfigurationFileSay) {
  auto mailbox = std::make_shared<MailboxPeer::Mailbox>();
  world.network.accept = [&] { return std::make_shared<MailboxPeer>(mailbox); };
  mailbox->messages.assign(1, {"u",
                               "Content-Type: application/ms-tnef\r\n"
                               "Content-Transfer-Encoding: base64\r\n\r\neJ8+IgEA\r\n"});
  const auto files = [&] {
    EXPECT_TRUE(backEnd.LoadMessageHeaders(request).Succeeded());
    EXPECT_TRUE(backEnd.LoadMessage(request).Succeeded());
    return world.shared.message.attachments.size();
  };
  EXPECT_EQ(files(), 1U);
  world.instance.access.expandTnef = kTrue;
  EXPECT_EQ(files(), 0U);
  world.instance.access.expandTnef.reset();
  ASSERT_TRUE(world.configuration.WriteString("Server pop.example", "ExpandTnef", "TRUE"));
  EXPECT_EQ(files(), 0U);
}

// What has come stays, and what has not begun takes nothing away.
TEST_F(InternetBackEndTest, AFailedLoadingKeepsTheHeadersThatHaveCome) {
  auto mailbox = std::make_shared<MailboxPeer::Mailbox>();
  std::shared_ptr<MailboxPeer> peer;
  world.network.accept = [&] { return peer = std::make_shared<MailboxPeer>(mailbox); };
  mailbox->messages.assign(3, {"u", "Subject: one\r\n\r\n1\r\n"});
  EXPECT_TRUE(backEnd.LoadMessageHeaders(request).Succeeded());
  EXPECT_EQ(world.shared.headers.size(), 3U);
  backEnd.Logout(request);
  world.network.weather = FakeNetwork::Weather::NoSuchHost;
  EXPECT_EQ(backEnd.LoadMessageHeaders(request).number, 2);
  EXPECT_EQ(world.shared.headers.size(), 3U);
  world.network.weather = FakeNetwork::Weather::Fine;
  using Trouble = MailboxPeer::Trouble;
  for (const auto& [trouble, wanted] :
       {std::pair{Trouble::Refuses, 24}, {Trouble::HangsUp, 29}, {Trouble::FallsSilent, 522}}) {
    mailbox->trouble = trouble;
    mailbox->troubleAt = "TOP 3";
    Timer abort(world.network, [&] { backEnd.AsynchAbort(); });
    abort.Start(5000);
    std::int32_t number = 0;
    const auto thrown = CodeOf([&] { number = backEnd.LoadMessageHeaders(request).number; });
    EXPECT_EQ(thrown + number, wanted);
    ASSERT_EQ(world.shared.headers.size(), 2U);
    EXPECT_EQ(world.shared.headers[1].subject, "one");
  }
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
  EXPECT_EQ(CodeOf([&] { backEnd.LoadMessage(request); }), 532);
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
  world.instance.encrypt = kTrue;
  world.log.Start();
  EXPECT_EQ(backEnd.Send(request).number, kBackEndSuccess);
  world.log.Stop();
  const auto log = ContentOf(*world.files, world.folder.Path("POPDUMP.TXT"));
  std::size_t at = 0;
  for (const auto* const line :
       {"--- Starting SMTP Send Method 2026-11-01 08:05:09 ---",
        "The message is neither signed nor encrypted", "Encoding alternatives... ",
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
