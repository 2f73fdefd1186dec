// Servers that mean harm: whatever they send, a call ends, in bounded time and memory, and the next
// one works.
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <map>

#include "InternetWorld.h"
#include "Peers.h"
#include "core/WholeFile.h"
#include "support/ProcessMemory.h"

namespace quillon::testing {
namespace {

constexpr std::size_t kMiB = 1024 * 1024;

// An obliging server, but for some commands, and for the greeting.
class HostilePeer final : public LinePeer {
 public:
  // What follows, over and over; the argument counts from 1. Empty: nothing more.
  using Flood = std::function<std::string(std::uint64_t)>;

  struct Answer {
    std::string first;
    Flood then = nullptr;
    TickCount gap = 0;  // milliseconds between two pieces
  };
  using Answers = std::map<std::string, Answer>;

  explicit HostilePeer(Answers answers, bool isPop = true)
      : answers_(std::move(answers)), usual_(isPop ? "+OK\r\n" : "250 ok\r\n") {
    answers_.try_emplace("greeting", Answer{isPop ? usual_ : "220 ready\r\n"});
  }

  void OnConnected() override { OnLine("greeting "); }
  void OnClientClosed() override { clientGone = true; }

  void OnDrained() override {
    if (!flood_) return;
    const auto piece = flood_(++pieces);
    if (piece.empty()) flood_ = nullptr;
    if (gap_ != 0) Wait(gap_);
    Say(piece);
  }

  bool clientGone = false;
  std::uint64_t pieces = 0;

 private:
  void OnLine(std::string_view line) override {
    const auto answer = answers_.find(std::string(line.substr(0, line.find_first_of(" \r"))));
    if (answer == answers_.end()) {
      if (!flood_) Say(usual_);
      return;
    }
    flood_ = answer->second.then;
    gap_ = answer->second.gap;
    pieces = 0;
    Say(answer->second.first);
  }

  Answers answers_;
  const std::string usual_;
  Flood flood_;
  TickCount gap_ = 0;
};

// The identifier of the message that is wanted.
HostilePeer::Answer Known() {
  return {"+OK 1 u\r\n"};
}

HostilePeer::Answer Always(const std::string& piece, TickCount gap = 0) {
  return {"+OK\r\n", [piece](std::uint64_t) { return piece; }, gap};
}

std::string Times(std::string_view text, std::size_t count) {
  std::string all;
  all.reserve(text.size() * count);
  while (count-- > 0) all += text;
  return all;
}

class HostileServerTest : public ::testing::Test {
 protected:
  using Operation = MailResult (InternetBackEnd::*)(MailRequest&);

  // The number that a call comes to. The one after it works, with a better server.
  std::int32_t Call(Operation operation, HostilePeer::Answers answers) {
    answers.try_emplace("UIDL", Known());
    std::shared_ptr<FakePeer> peer = std::make_shared<HostilePeer>(std::move(answers));
    world.network.accept = [&] { return peer; };
    KnowMessage();
    const auto number = (world.backEnd.*operation)(world.request).number;
    EXPECT_TRUE(number == kBackEndSuccess || world.received.Names().empty());
    world.network.accept = [] { return std::make_shared<ObligingPeer>(true); };
    world.backEnd.Logout(world.request);
    EXPECT_EQ(world.backEnd.LoadMessageHeaders(world.request).number, kBackEndSuccess);
    world.backEnd.Logout(world.request);
    return number;
  }

  // A message that LoadMessage can ask for.
  void KnowMessage() {
    world.shared.headers.assign(1, HeaderRecord());
    world.shared.headers[0].number = "1";
    world.shared.headers[0].uniqueId = "u";
    world.shared.headerOrigin.mailbox = "joe@POP.EXAMPLE";
  }

  std::string Log() { return ContentOf(*world.files, world.folder.Path("POPDUMP.TXT")); }

  InternetWorld world;
};

constexpr auto kHeaders = &InternetBackEnd::LoadMessageHeaders;
constexpr auto kIdentifiers = &InternetBackEnd::LoadMessageIdentifiers;
constexpr auto kLoad = &InternetBackEnd::LoadMessage;

// Each would take more than a 32-bit process has.
TEST_F(HostileServerTest, WhatIsKeptTakesLittleMemory) {
  const auto identifiers = [](std::uint64_t piece) {
    std::string lines;
    for (std::uint64_t i = 0; i < 1000; ++i) lines += std::to_string(piece * 1000 + i) + " a\r\n";
    return lines;
  };
  const auto header = [](std::string_view field, std::string_view value, std::size_t size) {
    const auto text = std::string(field) + Times(value, size / value.size()) + "\r\n\r\n.\r\n";
    return HostilePeer::Answer{
        "+OK\r\n", [text](std::uint64_t piece) { return piece == 1 ? text : std::string(); }};
  };
  const HostilePeer::Answer kManyMessages{"+OK 4000000000 1\r\n"};
  const struct {
    const char* what;
    Operation operation;
    HostilePeer::Answers answers;
  } kCases[] = {
      {"identifiers", kIdentifiers, {{"UIDL", {"+OK\r\n", identifiers}}}},
      {"one identifier again and again", kIdentifiers, {{"UIDL", Always(Times("1 a\r\n", 1000))}}},
      {"empty headers", kHeaders, {{"STAT", kManyMessages}, {"TOP", {"+OK\r\n.\r\n"}}}},
      {"long senders",
       kHeaders,
       {{"STAT", kManyMessages}, {"TOP", header("From: ", "a", 15 * kMiB)}}},
      {"long senders that are longer as text",
       kHeaders,
       {{"STAT", kManyMessages}, {"TOP", header("From: ", "\x80", 15 * kMiB)}}},
      {"many recipients", kLoad, {{"RETR", header("To: ", "a,", 15 * kMiB)}}},
      {"a long sender", kLoad, {{"RETR", header("From: ", "\x80", 15 * kMiB)}}},
  };
  world.instance.maximumHeaders = std::numeric_limits<std::int32_t>::max();
  for (const auto& test : kCases) {
    const ProcessMemory memory;
    EXPECT_EQ(Call(test.operation, test.answers), 30) << test.what;
    EXPECT_LT(memory.Peak(), 400 * kMiB) << test.what;
  }
}

// A server that sends a byte now and then; beside it, one that is as slow as the slowest line.
TEST_F(HostileServerTest, WhatWasFetchedIsFoundInAnyListOfIdentifiers) {
  const auto fetched = [](std::uint64_t number) { return std::to_string(number + 1'000'000); };
  std::vector<std::string> index;
  index.reserve(FetchedIndex::kMost);
  for (std::uint64_t i = 0; i < FetchedIndex::kMost; ++i) index.push_back(fetched(i));
  ASSERT_TRUE(world.fetched.MakeDirectory());
  ASSERT_TRUE(world.fetched.Add("joe@POP.EXAMPLE", index));
  const auto list = [&](std::uint64_t piece) {
    std::string lines;
    for (std::uint64_t i = 0; i < 1000; ++i) {
      const auto number = (piece - 1) * 1000 + i;
      lines += std::to_string(number + 1) + " " + fetched(number % FetchedIndex::kMost) + "\r\n";
    }
    return lines;
  };
  const auto endingList = [&](std::uint64_t piece) {
    if (piece <= FetchedIndex::kMost / 1000) return list(piece);
    return std::string(piece == FetchedIndex::kMost / 1000 + 1 ? ".\r\n" : "");
  };
  world.instance.access.trackUnread = kTrue;
  world.instance.unreadOnly = kTrue;
  const HostilePeer::Answer many{"+OK 4000000000 1\r\n"};
  const ProcessMemory memory;
  EXPECT_EQ(Call(kHeaders, {{"STAT", many}, {"UIDL", {"+OK\r\n", list}}}), 30);
  EXPECT_LT(memory.Peak(), 400 * kMiB);
  EXPECT_EQ(world.fetched.Read("joe@POP.EXAMPLE").size(), index.size());
  world.network.accept = [&] {
    return std::make_shared<HostilePeer>(HostilePeer::Answers{
        {"STAT", many}, {"UIDL", {"+OK\r\n", endingList}}, {"TOP", {"+OK\r\n.\r\n"}}});
  };
  world.instance.maximumHeaders = 1;
  EXPECT_TRUE(world.backEnd.LoadMessageHeaders(world.request).Succeeded());
  ASSERT_EQ(world.shared.headers.size(), 1U);
  EXPECT_EQ(world.shared.headers[0].number, "100001");
}

TEST_F(HostileServerTest, WhatDripsIsGivenUp) {
  const std::pair<const char*, Operation> kAnswers[] = {
      {"TOP", kHeaders}, {"UIDL", kIdentifiers}, {"RETR", kLoad}};
  const auto slowly = [](std::uint64_t piece) {
    if (piece > 100) return std::string();
    return piece < 100 ? "1 " + std::string(120, 'x') + "\r\n" : std::string(".\r\n");
  };
  for (const auto& [command, operation] : kAnswers) {
    for (const char* const drop : {"x", "1 x\r\n", "..\r\n"}) {
      const auto start = world.network.Now();
      EXPECT_EQ(Call(operation, {{"STAT", {"+OK 1 1\r\n"}}, {command, Always(drop, 1000)}}), 27);
      EXPECT_LE(world.network.Now() - start, 15000U) << command << drop;
    }
    const HostilePeer::Answer answer{"+OK\r\n", slowly, 1000};
    EXPECT_EQ(Call(operation, {{"STAT", {"+OK 1 1\r\n"}}, {command, answer}}), kBackEndSuccess);
  }
}

// The time that a client's object takes is not the server's.
TEST_F(HostileServerTest, ASlowClientDoesNotMakeTheServerSlow) {
  class SlowObject final : public NotificationObject {
   public:
    explicit SlowObject(FakeNetwork& network) : network_(network) {}
    bool AsynchNotification(const AsynchEvent& event) override {
      network_.RunUntil([] { return false; }, network_.Now() + 60000);
      result = event.result;
      return true;
    }
    std::int32_t result = 0;

   private:
    FakeNetwork& network_;
  };
  const auto object = std::make_shared<SlowObject>(world.network);
  world.notifier.Register(object, AsynchNotifier::Configuration::All);
  const auto message = [](std::uint64_t piece) {
    return piece == 1 ? "Subject: x\r\n" : piece == 2 ? "\r\ntext\r\n.\r\n" : "";
  };
  world.network.accept = [&] {
    return std::make_shared<HostilePeer>(
        HostilePeer::Answers{{"UIDL", Known()}, {"RETR", {"+OK\r\n", message, 1000}}});
  };
  KnowMessage();
  world.backEnd.LoadMessage(world.request);
  world.network.RunUntil([this] { return !world.notifier.InProgress(); }, kNoDeadline);
  EXPECT_EQ(object->result, kBackEndSuccess);
}

TEST_F(HostileServerTest, AMessageMayBeOnlySoLong) {
  world.configuration.WriteNumber("Internet", "MaximumMessageSize", 3);
  const auto line = std::string(100, 'x') + "\r\n";
  const auto text = Times(line, 1000);
  const std::string attachment = "Content-Type: a/b; name=c\r\n\r\n";
  EXPECT_EQ(Call(kLoad, {{"RETR", Always(text)}}), 30);
  EXPECT_EQ(Call(kLoad, {{"RETR", {"+OK\r\n" + attachment, Always(text).then}}}), 30);
  EXPECT_EQ(Call(kLoad, {{"RETR", {"+OK\r\n" + attachment, Always("x").then}}}), 30);

  const auto allowed = attachment + Times(line, 3 * kMiB / line.size() - 1) + ".\r\n";
  EXPECT_EQ(Call(kLoad, {{"RETR", {"+OK\r\n" + allowed}}}), kBackEndSuccess);
  for (const auto* const value : {"0", "-1", "much"}) {
    world.configuration.WriteString("Internet", "MaximumMessageSize", value);
    EXPECT_EQ(Call(kLoad, {{"RETR", {"+OK\r\n" + Times(line, 50000) + ".\r\n"}}}), kBackEndSuccess);
  }
}

// What comes when nothing was asked: the connection is closed before the log grows, and the next
// call makes a new one.
TEST_F(HostileServerTest, WhoTalksWithoutBeingAskedIsNotListenedTo) {
  const struct {
    bool isPop;
    const char* after;
    const char* answer;
    std::string talk;
  } kCases[] = {
      {true, "PASS", "+OK\r\n", "+OK I am still here\r\n"},
      {true, "PASS", "+OK\r\n", "-ERR\r\n+OK\r\n"},
      {true, "PASS", "+OK\r\n", std::string(100'000, 'x')},
      {false, "RSET", "250 ok\r\n", "220 ready\r\n"},
      {false, "RSET", "250 ok\r\n", std::string(200, '2')},
  };
  for (const auto& test : kCases) {
    const auto system = test.isPop ? mail_system::kPop3 : mail_system::kSmtp;
    const auto most = [&](std::uint64_t piece) { return piece < 10000 ? test.talk : ""; };
    auto peer = std::make_shared<HostilePeer>(
        HostilePeer::Answers{{test.after, {test.answer, most}}}, test.isPop);
    world.network.accept = [&] { return peer; };
    world.instance.mailSystem = system;
    world.log.Start();
    EXPECT_EQ(world.backEnd.Login(world.request).number, kBackEndSuccess);
    world.network.RunPending();
    EXPECT_TRUE(peer->clientGone);
    EXPECT_LT(peer->pieces * test.talk.size(), kMiB) << test.talk;
    world.log.Stop();
    EXPECT_LT(Log().size(), 100'000U) << test.talk;

    world.network.accept = [&] { return std::make_shared<ObligingPeer>(test.isPop); };
    world.instance.mailSystem = mail_system::kInternet;
    const auto next = test.isPop ? kHeaders : &InternetBackEnd::Send;
    EXPECT_EQ((world.backEnd.*next)(world.request).number, kBackEndSuccess);
    world.backEnd.Logout(world.request);
  }
}

// A server that never gives the answer that is waited for.
TEST_F(HostileServerTest, EndlessEvasionsEndTheCall) {
  const struct {
    const char* command;
    const char* evasion;
  } kCases[] = {
      {"greeting", "220 ready\r\n"}, {"greeting", "220-ready\r\n"}, {"RSET", "220 ready\r\n"},
      {"RSET", "500 no\r\n"},        {"MAIL", "220 ready\r\n"},     {"RCPT", "250-more\r\n"},
  };
  for (const auto& test : kCases) {
    const auto evade = [&](std::uint64_t piece) { return piece < 1'000'000 ? test.evasion : ""; };
    auto peer = std::make_shared<HostilePeer>(
        HostilePeer::Answers{{test.command, {test.evasion, evade}}}, false);
    world.network.accept = [&] { return peer; };
    world.log.Start();
    EXPECT_EQ(world.backEnd.Send(world.request).number, 3) << test.command << test.evasion;
    world.log.Stop();
    EXPECT_TRUE(peer->clientGone);
    EXPECT_LT(Log().size(), 5 * kMiB) << test.command << test.evasion;
  }
}

// A server that repeats the password, and sends what would upset a terminal or a box.
TEST_F(HostileServerTest, WhatAServerSaysIsCleanedBeforeItIsShown) {
  using std::string_literals::operator""s;
  const auto words = "no \x1B[2Jway with secret\0\a"s + std::string(65000, 'w') + "\r\n";
  const struct {
    HostilePeer::Answers answers;
    std::string text;
  } kCases[] = {
      {{{"PASS", {"-ERR wrong: secretsecret\r\n"}}}, "wrong: ********"},
      {{{"USER", {"-ERR" + words}}}, "no  [2Jway with **** "},
      {{{"greeting", {words}}},
       "The server port is not a POP server.  Server response: no  [2Jway with **** "},
      {{{"PASS", {"+OK secret\r\nand secret again\r\n"}}, {"STAT", {"-ERR secret\r\n"}}},
       "The POP STAT command failed."},
      {{{"STAT", {"+OK 1 1\r\n"}}, {"TOP", {"+OK\r\nSubject: secret\r\n.\r\n"}}}, ""},
  };
  world.instance.errorDisplay = kTrue;
  for (const auto& test : kCases) {
    world.network.accept = [&] { return std::make_shared<HostilePeer>(test.answers); };
    world.log.Start();
    auto result = world.backEnd.LoadMessageHeaders(world.request);
    world.network.RunPending();
    EXPECT_EQ(result.text.substr(0, test.text.size()), test.text);
    EXPECT_LE(result.text.size(), 600U);
    world.backEnd.Logout(world.request);
    world.log.Stop();
    EXPECT_EQ(Log().find("secret"), std::string::npos) << Log().substr(0, 2000);
  }
  for (const auto& shown : world.box.shown) {
    EXPECT_EQ(shown.find("secret"), std::string::npos);
    EXPECT_LE(shown.size(), 700U);
  }

  std::string resolved;
  const HostilePeer::Answers answers = {{"VRFY", {"250 Ann\x1B <ann@x>" + words}}};
  world.network.accept = [&] { return std::make_shared<HostilePeer>(answers, false); };
  world.backEnd.ResolveName(world.request, "ann", false, resolved);
  EXPECT_EQ(resolved.substr(0, 13), "Ann  <ann@x>n");
  EXPECT_LE(resolved.size(), 600U);
}

TEST_F(HostileServerTest, LongNamesOfManyFilesAreNotKept) {
  const auto part = "--b\r\nContent-Type: a/b; name=\"" + std::string(60'000, 'n') + "\"\r\n\r\n";
  const auto message = [&](std::uint64_t piece) {
    return piece <= 10 ? part : piece == 11 ? std::string("--b--\r\n.\r\n") : std::string();
  };
  const std::string start = "+OK\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n";
  EXPECT_EQ(Call(kLoad, {{"RETR", {start, message}}}), kBackEndSuccess);
  ASSERT_EQ(world.shared.message.attachments.size(), 10U);
  for (const auto& attachment : world.shared.message.attachments) {
    EXPECT_EQ(attachment.displayName, std::string(1000, 'n'));
  }
}

}  // namespace
}  // namespace quillon::testing
