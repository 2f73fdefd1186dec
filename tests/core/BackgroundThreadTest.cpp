#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <utility>

#include "core/BackgroundThread.h"

namespace quillon::testing {
namespace {

// Short ones, each begun while the one before it ends.
TEST(BackgroundThread, EachOneRuns) {
  constexpr int kMany = 5000;
  for (int i = 0; i < kMany; ++i) {
    std::promise<int> ran;
    auto result = ran.get_future();
    RunInBackground(
        [i, ran = std::make_shared<std::promise<int>>(std::move(ran))] { ran->set_value(i); });
    ASSERT_EQ(result.wait_for(std::chrono::seconds(20)), std::future_status::ready) << i;
    ASSERT_EQ(result.get(), i);
  }
}

}  // namespace
}  // namespace quillon::testing
