#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/Platform.h"
#include "ports/EventLoop.h"
#include "ports/Network.h"

namespace quillon {
namespace {

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
