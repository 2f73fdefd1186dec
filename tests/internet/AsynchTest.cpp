// Operations that go on by themselves and tell a client's object how they fare, and what the user
// sees of a long one.
#include <gtest/gtest.h>
#include <limits>
#include <random>

#include "InternetWorld.h"
#include "Peers.h"
#include "core/WholeFile.h"

namespace quillon::testing {
namespace {

class RecordingObject final : public NotificationObject {
 public:
  bool AsynchNotification(const AsynchEvent& event) override {
    if (event.kind != asynch_kind::kProgress) {
      heard.push_back(std::to_string(event.operation) + "/" + std::to_string(event.kind) + " " +
                      std::to_string(event.result) + " " + event.text);
    }
    last = event;
    if (during) during(event);
    return !gone;
  }

  std::vector<std::string> heard;
  AsynchEvent last;
  std::function<void(const AsynchEvent&)> during;
  bool gone = false;
};

class AsynchTest : public ::testing::Test {
 protected:
  AsynchTest() {
    end.kind = asynch_kind::kEndOfProcess;
    world.network.accept = [this] { return std::make_shared<ObligingPeer>(servePop); };
    world.notifier.Register(object, AsynchNotifier::Configuration::All);
  }

  // Runs what has been started to its end.
  void RunToEnd() {
    world.network.RunUntil([this] { return !world.notifier.InProgress(); }, kNoDeadline);
    world.network.RunPending();
  }

  InternetWorld world;
  InternetBackEnd& backEnd = world.backEnd;
  std::shared_ptr<RecordingObject> object = std::make_shared<RecordingObject>();
  bool servePop = true;
  AsynchEvent end;  // of an abort
};

TEST_F(AsynchTest, AnOperationReturnsAtOnceAndEndsWithAnEvent) {
  {
    // The object that has begun it may go.
    InstanceState instance = world.instance;
    MailRequest request{instance, world.shared};
    EXPECT_EQ(backEnd.LoadMessageHeaders(request).number, kBackEndSuccess);
  }
  EXPECT_TRUE(world.shared.headers.empty());
  EXPECT_EQ(CodeOf([&] { backEnd.LoadMessageHeaders(world.request); }), 540);
  EXPECT_EQ(CodeOf([&] { world.notifier.Unregister(); }), 540);
  RunToEnd();
  EXPECT_EQ(object->heard,
            (std::vector<std::string>{
                "2/1 -1 Connected to server...", "2/1 -1 Logged in successfully.",
                "2/1 -1 Loading message headers...", "2/1 -1 Headers loaded successfully.",
                "2/2 -1 Headers loaded successfully."}));
  EXPECT_EQ(object->last.done, 1);
  EXPECT_EQ(object->last.total, 1);
  ASSERT_EQ(world.shared.headers.size(), 1U);
  EXPECT_EQ(world.shared.headers[0].subject, "obliging");

  world.notifier.Register(object, AsynchNotifier::Configuration::EndsOnly);
  object->heard.clear();
  for (const auto operation : {&InternetBackEnd::DeleteMessage, &InternetBackEnd::LoadMessage,
                               &InternetBackEnd::LoadMessageIdentifiers, &InternetBackEnd::Login}) {
    EXPECT_EQ((backEnd.*operation)(world.request).number, kBackEndSuccess);
    RunToEnd();
  }
  ASSERT_EQ(object->heard.size(), 4U);
  EXPECT_EQ(object->heard[0], "4/2 -1 Message deleted successfully.");
  EXPECT_EQ(object->heard[1], "3/2 -1 Message loaded successfully.");
  EXPECT_EQ(object->heard[2], "7/2 -1 Identifiers loaded successfully.");
  EXPECT_EQ(object->heard[3].substr(0, 6), "6/2 -1");
}

TEST_F(AsynchTest, AFailureIsTheResultOfTheLastEvent) {
  world.network.weather = FakeNetwork::Weather::NoSuchHost;
  EXPECT_EQ(backEnd.LoadMessageHeaders(world.request).number, kBackEndSuccess);
  RunToEnd();
  EXPECT_EQ(object->heard, std::vector<std::string>{"2/2 2 Could not connect to POP server."});
  // What is wrong with the call itself is raised at once.
  world.shared.message.from = "nobody\r\n";
  EXPECT_EQ(backEnd.Send(world.request).number, kBackEndSuccess);
  RunToEnd();
  EXPECT_EQ(object->heard.back(), "1/2 555 SMTP invalid sender address (From property).");
  world.shared.message.from = "joe@example.org";
  world.shared.message.to = {"ann@example.org\nRCPT TO"};
  EXPECT_EQ(CodeOf([&] { backEnd.Send(world.request); }), 529);
  EXPECT_FALSE(world.notifier.InProgress());
}

TEST_F(AsynchTest, FromInsideACallbackNothingCanBeStarted) {
  servePop = false;
  std::int32_t code = 0;
  std::int32_t unregistered = 0;
  object->during = [&](const AsynchEvent&) {
    code = CodeOf([&] { backEnd.Send(world.request); });
    unregistered = CodeOf([&] { world.notifier.Unregister(); });
  };
  EXPECT_EQ(backEnd.Send(world.request).number, kBackEndSuccess);
  RunToEnd();
  EXPECT_EQ(object->last.kind, asynch_kind::kEndOfProcess);
  EXPECT_EQ(object->last.result, -1);
  EXPECT_EQ(code, 541);
  EXPECT_EQ(unregistered, 541);
  object->during = nullptr;
  EXPECT_EQ(backEnd.Send(world.request).number, kBackEndSuccess);
  RunToEnd();
  EXPECT_EQ(object->last.result, -1);
}

TEST_F(AsynchTest, AnObjectThatFailsDoesNotHarmTheOperation) {
  object->during = [](const AsynchEvent&) { throw std::bad_alloc(); };
  EXPECT_EQ(backEnd.LoadMessageHeaders(world.request).number, kBackEndSuccess);
  RunToEnd();
  EXPECT_EQ(world.shared.headers.size(), 1U);
  EXPECT_EQ(object->last.result, -1);
  object->during = nullptr;
  object->heard.clear();

  object->gone = true;
  EXPECT_EQ(backEnd.LoadMessageHeaders(world.request).number, kBackEndSuccess);
  RunToEnd();
  EXPECT_EQ(object->heard.size(), 1U);
  EXPECT_FALSE(world.notifier.Registered());
  EXPECT_EQ(world.shared.headers.size(), 1U);
  world.shared.headers.clear();
  EXPECT_EQ(backEnd.LoadMessageHeaders(world.request).number, kBackEndSuccess);  // waits again
  EXPECT_EQ(world.shared.headers.size(), 1U);
}

TEST_F(AsynchTest, AnAbortedOperationEndsWithoutAnEventAndTheNextOneWorks) {
  object->during = [&](const AsynchEvent& event) {
    if (event.text == "Loading message headers...") backEnd.AsynchAbort();
  };
  EXPECT_EQ(backEnd.LoadMessageHeaders(world.request).number, kBackEndSuccess);
  world.network.RunUntil([] { return false; }, world.network.Now() + 60000);
  EXPECT_EQ(object->last.kind, asynch_kind::kStatus);
  EXPECT_TRUE(world.shared.headers.empty());
  world.notifier.Post(end);
  object->during = nullptr;
  EXPECT_EQ(backEnd.LoadMessageHeaders(world.request).number, kBackEndSuccess);
  RunToEnd();
  EXPECT_EQ(object->last.result, -1);
  EXPECT_EQ(world.shared.headers.size(), 1U);

  // While the connection is being made, the abort ends it there and then.
  backEnd.Shutdown(0);
  world.network.weather = FakeNetwork::Weather::NoAnswer;
  EXPECT_EQ(backEnd.LoadMessageHeaders(world.request).number, kBackEndSuccess);
  const auto start = world.network.Now();
  backEnd.AsynchAbort();
  world.notifier.Post(end);
  world.network.weather = FakeNetwork::Weather::Fine;
  EXPECT_EQ(backEnd.LoadMessageHeaders(world.request).number, kBackEndSuccess);
  RunToEnd();
  EXPECT_EQ(object->last.result, -1);
  EXPECT_EQ(world.network.Now(), start);
  world.shared.headers.clear();

  EXPECT_EQ(backEnd.LoadMessageHeaders(world.request).number, kBackEndSuccess);
  backEnd.Shutdown(0);
  world.network.RunUntil([] { return false; }, world.network.Now() + 60000);
  EXPECT_TRUE(world.shared.headers.empty());
}

// The abort of another client is on its way while the operation is begun: it meets all of the
// operation or nothing of it.
TEST_F(AsynchTest, AnAbortThatComesWhileAnOperationBegins) {
  world.network.Post([&] { backEnd.AsynchAbort(); });
  EXPECT_TRUE(backEnd.LoadMessageHeaders(world.request).Succeeded());
  EXPECT_TRUE(world.notifier.InProgress());
  world.network.RunUntil([] { return false; }, world.network.Now() + 60000);
  world.notifier.Post(end);
  EXPECT_TRUE(world.shared.headers.empty());
  EXPECT_TRUE(backEnd.LoadMessageHeaders(world.request).Succeeded());
  RunToEnd();
  EXPECT_EQ(world.shared.headers.size(), 1U);
}

// What fails inside the loop fails the operation that it belongs to, and nothing else.
TEST_F(AsynchTest, AnExceptionEndsItsOperationAlone) {
  servePop = false;
  world.shared.message.body.assign(300000, 'x');
  world.shared.internet.progressBar = 5;
  world.display.failure = "no memory for a window";
  EXPECT_TRUE(backEnd.Send(world.request).Succeeded());
  RunToEnd();
  EXPECT_EQ(object->last.kind, asynch_kind::kEndOfProcess);
  EXPECT_EQ(object->last.result, 0);
  EXPECT_EQ(object->last.text, "Undetermined error in Send method.");
  EXPECT_TRUE(world.temporary.Names().empty());
  world.notifier.Reset();
  EXPECT_THROW(backEnd.Send(world.request), std::runtime_error);
  world.display.failure = nullptr;
  EXPECT_TRUE(backEnd.Send(world.request).Succeeded());
}

// A client that comes while the last one's sessions are being left gets sessions of its own, and
// the success of a farewell is not taken for its own.
TEST_F(AsynchTest, WorkThatBeginsDuringTheShutdownWaitsForItsEnd) {
  EXPECT_TRUE(backEnd.LoadMessageHeaders(world.request).Succeeded());
  RunToEnd();
  servePop = false;
  const auto connects = world.network.connects;
  bool asked = false;
  world.network.Post([&] {
    asked = backEnd.Send(world.request).Succeeded();
    // What is sent is the message of the call, whatever other clients do to it while it waits.
    world.shared.message.body = "of somebody else";
    world.shared.message.to = {};
  });
  backEnd.Shutdown(1000);
  EXPECT_TRUE(asked);
  EXPECT_TRUE(world.notifier.InProgress());
  RunToEnd();
  EXPECT_EQ(object->last.operation, asynch_operation::kSend);
  EXPECT_EQ(object->last.result, -1);
  EXPECT_EQ(object->last.text, "Message Sent Successfully");
  EXPECT_EQ(world.network.connects, connects + 1);
  // One that waits for its result gets it out of the loop that the shutdown waits in.
  world.notifier.Reset();
  servePop = true;
  EXPECT_TRUE(backEnd.LoadMessageHeaders(world.request).Succeeded());
  servePop = false;
  world.shared.message.to = {"ann@example.org"};
  asked = false;
  world.network.Post([&] { asked = backEnd.Send(world.request).Succeeded(); });
  backEnd.Shutdown(1000);
  EXPECT_TRUE(asked);
  world.notifier.Register(object, AsynchNotifier::Configuration::All);

  // And when the server does not answer to the farewell.
  auto mailbox = std::make_shared<MailboxPeer::Mailbox>();
  mailbox->trouble = MailboxPeer::Trouble::FallsSilent;
  mailbox->troubleAt = "QUIT";
  world.network.accept = [&] { return std::make_shared<MailboxPeer>(mailbox); };
  EXPECT_TRUE(backEnd.LoadMessageHeaders(world.request).Succeeded());
  RunToEnd();
  world.network.accept = [] { return std::make_shared<MutePeer>(); };
  object->heard.clear();
  world.network.Post([&] { asked = backEnd.LoadMessageHeaders(world.request).Succeeded(); });
  backEnd.Shutdown(0);
  RunToEnd();
  EXPECT_EQ(object->last.result, 27);
}

TEST_F(AsynchTest, LongEncodingLetsOthersHaveTheirTurns) {
  servePop = false;
  constexpr std::size_t kSize = 3'000'000;
  std::string bytes(kSize, '\0');
  std::mt19937 random(1);
  for (auto& byte : bytes) byte = static_cast<char>(random());
  WriteWholeFile(*world.files, world.folder.Path("long"), BytesOf(bytes));
  world.shared.message.attachments = {{world.folder.Path("long"), "long"}};
  world.network.timePerLook = 2;  // two or three blocks, and the loop has a turn
  for (const std::int16_t encoding : std::initializer_list<std::int16_t>{0, 2, 2 + 64}) {
    world.instance.attachmentEncoding = encoding;
    EXPECT_EQ(backEnd.Send(world.request).number, kBackEndSuccess);
    world.network.RunUntil([this] { return object->last.kind == asynch_kind::kProgress; },
                           kNoDeadline);
    EXPECT_EQ(object->last.done, 0);
    EXPECT_GT(object->last.total, static_cast<std::int32_t>(kSize));
    EXPECT_FALSE(world.temporary.Names().empty());
    RunToEnd();
    EXPECT_EQ(object->last.result, -1);
    EXPECT_TRUE(world.temporary.Names().empty());

    // Aborted in the middle of it, or cut off by the end of the program.
    EXPECT_EQ(backEnd.Send(world.request).number, kBackEndSuccess);
    EXPECT_FALSE(world.temporary.Names().empty());
    encoding == 0 ? backEnd.Shutdown(0) : backEnd.AsynchAbort();
    EXPECT_TRUE(world.temporary.Names().empty());
    world.notifier.Post(end);

    EXPECT_EQ(backEnd.Send(world.request).number, kBackEndSuccess);
    world.disk.writeBudget = 1'000'000;
    RunToEnd();
    EXPECT_EQ(object->last.kind, asynch_kind::kEndOfProcess);
    EXPECT_EQ(object->last.result, encoding < 64 ? 535 : 534);
    EXPECT_TRUE(world.temporary.Names().empty());
    world.disk.writeBudget = std::numeric_limits<std::uint64_t>::max();
  }
  // Without an object the user's button does it.
  world.notifier.Reset();
  world.shared.internet.progressBar = 5;
  Timer user(world.network, [&] { world.display.abort(); });
  user.Start(20);
  EXPECT_EQ(CodeOf([&] { backEnd.Send(world.request); }), 522);
  EXPECT_EQ(world.display.seen.at(1), "Encoding attachments...");
  EXPECT_EQ(world.display.seen.back(), "hidden");
  EXPECT_TRUE(world.temporary.Names().empty());
  EXPECT_EQ(backEnd.Send(world.request).number, kBackEndSuccess);
}

TEST_F(AsynchTest, TheUserSeesALongMessageAndMayAbortIt) {
  world.notifier.Reset();
  servePop = false;
  EXPECT_EQ(backEnd.Send(world.request).number, kBackEndSuccess);
  EXPECT_TRUE(world.display.seen.empty());  // too short

  world.shared.message.body.assign(300000, 'x');
  world.shared.internet.progressBar = 5;
  EXPECT_EQ(backEnd.Send(world.request).number, kBackEndSuccess);
  auto& seen = world.display.seen;
  ASSERT_GE(seen.size(), 4U);
  EXPECT_EQ(seen[0], "Sending Mail 5");
  EXPECT_EQ(seen[1], "Sending message...");
  EXPECT_EQ(seen[seen.size() - 2], "Message Sent Successfully");
  EXPECT_EQ(seen.back(), "hidden");
  using Line = ProgressDisplay::Line;
  EXPECT_EQ(world.display.lines[Line::Server], "smtp.example");
  EXPECT_NE(world.display.lines[Line::Amount].find(" of 293."), std::string::npos);

  seen.clear();
  world.shared.internet.progressBar = 0;
  EXPECT_EQ(backEnd.Send(world.request).number, kBackEndSuccess);
  EXPECT_TRUE(seen.empty());

  world.shared.internet.progressBar = 7;
  Timer user(world.network, [&] { world.display.abort(); });
  user.Start(5500);  // the peer has long stopped taking anything
  backEnd.Shutdown(0);
  world.network.accept = [this] {
    auto peer = std::make_shared<ObligingPeer>(servePop);
    peer->appetite = 100000;
    return peer;
  };
  EXPECT_EQ(CodeOf([&] { backEnd.Send(world.request); }), 522);
  EXPECT_EQ(seen.back(), "hidden");
  EXPECT_EQ(world.display.lines[Line::Time].substr(0, 4), "0:05");
  // What went before it stood still was too fast to be shown at once, and is shown all the same.
  const auto position = seen.at(seen.size() - 3);
  EXPECT_GE(std::stoi(position), 100000) << position;
}

}  // namespace
}  // namespace quillon::testing
