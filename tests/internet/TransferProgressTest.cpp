#include <gtest/gtest.h>
#include <limits>

#include "internet/TransferProgress.h"

namespace quillon {
namespace {

using Unit = TransferProgress::Unit;
constexpr std::uint64_t kMega = 1ULL << 20U;
constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();

TEST(TransferProgressTest, SaysHowMuchOfWhatIsKnown) {
  const struct {
    Unit unit;
    std::uint64_t done, total;
    const char* words;
  } cases[] = {
      {Unit::Bytes, 0, 0, "0 bytes"},
      {Unit::Bytes, 1, 0, "1 byte"},
      {Unit::Bytes, 1023, 1024, "1023 bytes of 1.0 KB (99 %)"},
      {Unit::Bytes, kMega - 1, kMega, "1.0 MB of 1.0 MB (99 %)"},
      {Unit::Bytes, kMega * 6 / 5 + 1, 5 * kMega, "1.2 MB of 5.0 MB (24 %)"},
      {Unit::Bytes, 5 * kMega, 5 * kMega, "5.0 MB of 5.0 MB (100 %)"},
      {Unit::Bytes, 6 * kMega, 5 * kMega, "6.0 MB of 6.0 MB (100 %)"},  // more than was said
      {Unit::Bytes, kMost - 1, kMost, "16.0 EB of 16.0 EB (99 %)"},
      {Unit::Messages, 1, 0, "1 message"},
      {Unit::Messages, 1, 4, "1 of 4 messages (25 %)"},
      {Unit::Messages, 1, 1, "1 of 1 message (100 %)"},
  };
  for (const auto& c : cases) {
    TransferProgress progress(c.unit, 0);
    progress.Update(c.done, c.total, 0);
    EXPECT_EQ(c.words, progress.Amount());
  }
}

TEST(TransferProgressTest, SaysTheTimeLeftOnceItIsKnown) {
  TransferProgress progress(Unit::Bytes, 1000);
  EXPECT_EQ("0:00 so far", progress.Time(1000));
  EXPECT_EQ("0:09 so far", progress.Time(10999));  // connecting
  const auto send = [&](TickCount from, TickCount to, std::uint64_t begin, std::uint64_t rate,
                        std::uint64_t total) {
    for (TickCount now = from; now <= to; now += 100) {
      progress.Update(begin + (now - from) * rate / 1000, total, now);
    }
  };
  progress.Update(0, 100000, 11000);
  send(20000, 21500, 1, 1000, 100000);
  EXPECT_EQ("0:20 so far", progress.Time(21500));  // too early to tell
  send(21600, 30000, 1600, 1000, 100000);
  EXPECT_EQ("0:29 so far, 2 minutes left", progress.Time(30000));
  EXPECT_EQ("0:29 so far, 2 minutes left", progress.Time(30200));  // told again at once
  // The total grows; the rate changes, and the words follow it within some seconds.
  progress.Update(10000, 10000000, 30100);
  EXPECT_EQ("0:30 so far, 3 hours left", progress.Time(31000));
  send(31000, 61000, 10000, 100000, 10000000);
  EXPECT_EQ("1:00 so far, 71 seconds left", progress.Time(61000));
  // Nothing moves: the time left grows until nobody knows.
  EXPECT_EQ("1:20 so far, 64 minutes left", progress.Time(81000));
  for (TickCount now = 82000; now < 4000000; now += 1000) progress.Time(now);
  EXPECT_EQ("1:06:39 so far", progress.Time(4000000));
  // What comes next begins anew.
  progress.Update(500, 1000, 4000000);
  EXPECT_EQ("1:06:39 so far", progress.Time(4000900));
  send(4001000, 4003000, 500, 100, 1000);
  EXPECT_EQ("1:06:42 so far, 4 seconds left", progress.Time(4003000));
  progress.Update(999, 1000, 4003100);
  EXPECT_EQ("1:06:42 so far, 1 second left", progress.Time(4003100));
  progress.Update(1000, 1000, 4003200);
  EXPECT_EQ("1:06:42 so far", progress.Time(4003200));
}

}  // namespace
}  // namespace quillon
