#include <algorithm>
#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/Platform.h"
#include "ports/EventLoop.h"
#include "ports/Network.h"
#include "support/LoopbackPeer.h"

namespace quillon {
namespace {

using testing::LoopbackPeer;

constexpr TickCount kPatience = 20000;

TEST(EventLoop, FiresTimersInTheOrderOfTheirTimes) {
  const auto loop = MakeNetworkLoop();
  std::string order;
  Timer late(*loop, [&] { order += 'l'; });
  Timer stopped(*loop, [&] { order += 's'; });
  Timer again(*loop, [&] {
    order += 'a';
    if (order.size() < 3) again.Start(1);
  });
  Timer stopper(*loop, [&] {
    order += 'x';
    stopped.Stop();
  });
  late.Start(40);
  stopped.Start(20);
  stopper.Start(2);
  again.Start(1);
  EXPECT_TRUE(loop->RunUntil([&] { return order.find('l') != std::string::npos; },
                             loop->Now() + kPatience));
  EXPECT_EQ(order.back(), 'l');
  EXPECT_EQ(order.find('s'), std::string::npos);
  EXPECT_FALSE(late.Running());
}

TEST(EventLoop, StopsAtItsDeadlineAndWakesForPostedWork) {
  const auto loop = MakeNetworkLoop();
  const auto start = loop->Now();
  EXPECT_FALSE(loop->RunUntil([] { return false; }, start + 20));
  EXPECT_GE(loop->Now(), start + 20);

  std::vector<int> done;
  std::thread poster([&] {
    for (int work = 0; work < 3; ++work) loop->Post([&done, work] { done.push_back(work); });
  });
  EXPECT_TRUE(loop->RunUntil([&] { return done.size() == 3; }, kNoDeadline));
  EXPECT_EQ(done, (std::vector<int>{0, 1, 2}));
  poster.join();
}

// Between the first and the last item a nested wait runs others.
TEST(EventLoop, PostedWorkKeepsItsOrderInNestedWaits) {
  const auto loop = MakeNetworkLoop();
  std::string order;
  const auto post = [&](char item) { loop->Post([&order, item] { order += item; }); };
  post('1');
  loop->Post([&] {
    post('5');
    EXPECT_TRUE(loop->RunUntil([&] { return order.size() >= 3; }, loop->Now() + kPatience));
    EXPECT_EQ(order.substr(0, 3), "134");
    order += '2';
  });
  post('3');
  post('4');
  EXPECT_TRUE(loop->RunUntil([&] { return order.size() >= 5; }, loop->Now() + kPatience));
  loop->RunPending();
  order.erase(order.find('2'), 1);
  EXPECT_EQ(order, "1345");
}

TEST(EventLoop, WorkThatPostsItselfLetsOthersHaveTheirTurn) {
  const auto loop = MakeNetworkLoop();
  int turns = 0;
  std::function<void()> again = [&] {
    ASSERT_LT(++turns, 1'000'000);
    loop->Post(again);
  };
  bool fired = false;
  Timer timer(*loop, [&] { fired = true; });
  Timer restarted(*loop, [&] { restarted.Start(0); });
  timer.Start(5);
  restarted.Start(0);
  again();
  EXPECT_TRUE(loop->RunUntil([&] { return fired; }, loop->Now() + kPatience));
  const auto before = turns;
  loop->RunPending();
  EXPECT_LT(turns, before + 1000);
}

TEST(EventLoop, WhatACallbackThrowsReachesTheOutermostWaitAndNobodyElse) {
  const auto loop = MakeNetworkLoop();
  std::string ran;
  const auto fail = [] { throw std::runtime_error("failed"); };
  Timer failing(*loop, fail);
  Timer timer(*loop, [&] { ran += 't'; });
  const auto allRan = [&] { return ran.size() == 3; };
  loop->Post([&] {
    EXPECT_NO_THROW(loop->RunUntil(allRan, loop->Now() + kPatience));
    ran += 'n';
  });
  loop->Post(fail);
  loop->Post([&] { ran += 'a'; });
  loop->Post([&] { ran += 'b'; });
  failing.Start(0);
  timer.Start(0);
  const auto run = [&] { loop->RunUntil([] { return false; }, loop->Now() + 20); };
  EXPECT_THROW(run(), std::runtime_error);
  EXPECT_EQ(ran, "abtn");
  EXPECT_THROW(run(), std::runtime_error);  // the timer's
  EXPECT_NO_THROW(run());

  loop->Contain(fail);
  EXPECT_THROW(loop->RunPending(), std::runtime_error);
}

// Takes a little of what arrives with each event.
class Reader final : public ByteStream::Handler {
 public:
  Reader(NetworkLoop& loop, const SocketAddress& address) : stream(loop.Connect(address, *this)) {}

  void OnStreamConnected() override {}
  void OnStreamFailed(int) override { stream.reset(); }
  void OnStreamReadable() override {
    ++events;
    std::array<char, 256> buffer{};
    stream->Read(buffer);
    if (events == 1) throw std::runtime_error("failed");
  }
  void OnStreamWritable() override {}

  int events = 0;
  std::unique_ptr<ByteStream> stream;
};

TEST(EventLoop, APeerThatNeverStopsTalkingLetsOthersHaveTheirTurn) {
  const auto loop = MakeNetworkLoop();
  LoopbackPeer peer([](LoopbackPeer::Connection& connection) {
    const std::string block(100'000, 'x');
    while (connection.Send(block)) {
    }
  });
  Reader reader(*loop, peer.Address());
  ASSERT_NE(reader.stream, nullptr);
  bool fired = false;
  Timer timer(*loop, [&] { fired = true; });
  int asked = 0;
  int mostEvents = 0;
  const auto run = [&] {
    return loop->RunUntil(
        [&, before = 0]() mutable {
          ++asked;
          mostEvents = std::max(mostEvents, reader.events - std::exchange(before, reader.events));
          return fired && reader.events > 1000;
        },
        loop->Now() + kPatience);
  };
  EXPECT_THROW(run(), std::runtime_error);  // and the stream goes on
  timer.Start(50);
  EXPECT_TRUE(run());
  EXPECT_GT(asked, 1);
  EXPECT_LT(mostEvents, 50);
  reader.stream.reset();
}

TEST(Network, LooksNamesUpWithoutBlockingAndForgetsWhatIsGivenUp) {
  const auto loop = MakeNetworkLoop();
  std::optional<std::vector<SocketAddress>> found;
  bool calledAfterAll = false;
  auto lookup = loop->Resolve("localhost", 2525, [&](std::vector<SocketAddress> addresses, int) {
    EXPECT_FALSE(found.has_value());
    found = std::move(addresses);
  });
  loop->Resolve("localhost", 1,
                [&](const std::vector<SocketAddress>&, int) { calledAfterAll = true; });
  ASSERT_TRUE(loop->RunUntil([&] { return found.has_value(); }, loop->Now() + kPatience));
  ASSERT_FALSE(found->empty());
  EXPECT_EQ(found->front().port, 2525);

  found.reset();
  lookup = loop->Resolve("no.such.host.invalid", 1,
                         [&](std::vector<SocketAddress> addresses, int error) {
                           EXPECT_NE(error, 0);
                           found = std::move(addresses);
                         });
  ASSERT_TRUE(loop->RunUntil([&] { return found.has_value(); }, loop->Now() + kPatience));
  EXPECT_TRUE(found->empty());
  EXPECT_FALSE(calledAfterAll);
}

}  // namespace
}  // namespace quillon
