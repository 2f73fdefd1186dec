// Coroutines: who goes on when, what is destroyed when, and where results and exceptions end.
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/Operation.h"

namespace quillon::testing {
namespace {

// Something that happens later; one coroutine at a time waits for it.
class Event {
 public:
  class Wait {
   public:
    explicit Wait(Event& event) : event_(event) {}
    ~Wait() {
      if (event_.waiting_ == this) event_.waiting_ = nullptr;
    }
    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;
    bool await_ready() const noexcept { return false; }
    template <typename Promise>
    void await_suspend(std::coroutine_handle<Promise> waiting) {
      suspended_ = Suspended(waiting);
      event_.waiting_ = this;
    }
    int await_resume() const { return event_.value_; }

   private:
    friend class Event;
    Event& event_;
    Suspended suspended_;
  };

  Wait operator co_await() { return Wait(*this); }
  bool Awaited() const { return waiting_ != nullptr; }
  void Happen(int value) {
    value_ = value;
    if (auto* const waiting = std::exchange(waiting_, nullptr)) waiting->suspended_.Resume();
  }

 private:
  Wait* waiting_ = nullptr;
  int value_ = 0;
};

struct Noted {
  Noted(std::vector<std::string>& to, std::string what) : notes(to), name(std::move(what)) {}
  Noted(const Noted&) = delete;
  Noted& operator=(const Noted&) = delete;
  ~Noted() { notes.push_back(name); }
  std::vector<std::string>& notes;
  std::string name;
};

class TaskTest : public ::testing::Test {
 protected:
  Task<int> Inner(std::string name) {
    const Noted noted(notes, std::move(name));
    const int first = co_await event;
    if (first < 0) throw std::runtime_error("negative");
    co_return first + co_await event;
  }
  Task<std::string> Outer() {
    const Noted noted(notes, "outer");
    const int sum = co_await Inner("inner");
    co_return std::to_string(sum);
  }
  Task<int> AtOnce(int value) {
    if (value < 0) throw std::runtime_error("negative");
    co_return value;
  }
  Task<int> SumOf(int count) {
    int sum = 0;
    for (int i = 0; i < count; ++i) sum += co_await AtOnce(1);
    co_return sum;
  }
  Task<int> CaughtInside() {
    int caught = 0;
    try {
      co_await Inner("thrower");
    } catch (const std::runtime_error&) {
      caught = 1;
    }
    co_return caught + co_await event;
  }

  Event event;
  std::vector<std::string> notes;
};

TEST_F(TaskTest, NestedTasksGoOnWhereTheyWaitedAndEndInsideOut) {
  int ended = 0;
  Operation<std::string> operation([&] { ++ended; });
  operation.Start(Outer());
  EXPECT_TRUE(operation.Running());
  event.Happen(40);
  EXPECT_TRUE(operation.Running());
  event.Happen(2);
  EXPECT_FALSE(operation.Running());
  EXPECT_EQ(ended, 1);
  EXPECT_EQ(operation.Take(), "42");
  EXPECT_EQ(notes, (std::vector<std::string>{"inner", "outer"}));
  event.Happen(1);  // nobody waits any more
  EXPECT_EQ(ended, 1);
}

TEST_F(TaskTest, NothingRunsBeforeItsTimeAndATaskThatNobodyStartedIsFreed) {
  { const auto never = Outer(); }
  EXPECT_TRUE(notes.empty());
}

TEST_F(TaskTest, TasksThatDoNotWaitNeedNoStack) {
  Operation<int> operation;
  operation.Start(SumOf(1'000'000));
  EXPECT_EQ(operation.Take(), 1'000'000);
}

TEST_F(TaskTest, AnExceptionGoesToTheAwaiterAndFromTheLastOneIntoTheResult) {
  Operation<int> caught;
  caught.Start(CaughtInside());
  event.Happen(-1);
  EXPECT_EQ(notes, std::vector<std::string>{"thrower"});
  event.Happen(6);
  EXPECT_EQ(caught.Take(), 7);

  int ended = 0;
  Operation<std::string> operation([&] { ++ended; });
  operation.Start(Outer());
  event.Happen(-1);
  EXPECT_EQ(ended, 1);
  EXPECT_THROW(operation.Take(), std::runtime_error);
  Operation<int> atOnce;
  atOnce.Start(AtOnce(-1));
  EXPECT_THROW(atOnce.Take(), std::runtime_error);
}

TEST_F(TaskTest, AnAbortDestroysWhatWaitsAndTellsNobody) {
  int ended = 0;
  Operation<std::string> operation([&] { ++ended; });
  operation.Start(Outer());
  event.Happen(1);
  operation.Abort();
  EXPECT_TRUE(operation.Aborted());
  EXPECT_FALSE(operation.Running());
  EXPECT_FALSE(event.Awaited());
  EXPECT_EQ(notes, (std::vector<std::string>{"inner", "outer"}));
  event.Happen(1);
  EXPECT_EQ(ended, 0);
  // And the next one is not taken for it.
  operation.Start(Outer());
  EXPECT_FALSE(operation.Aborted());
  event.Happen(1);
  event.Happen(1);
  EXPECT_EQ(operation.Take(), "2");
  EXPECT_EQ(ended, 1);
}

// From inside, the frame is on the stack: it is destroyed when it waits next, unless it ends first.
TEST_F(TaskTest, AnAbortFromInsideWaitsForTheNextWait) {
  Operation<int> operation;
  const auto abortsItself = [&](bool waits) -> Task<int> {
    const Noted noted(notes, "self");
    co_await event;
    operation.Abort();
    EXPECT_TRUE(notes.empty());
    if (waits) co_await event;
    co_return 5;
  };
  operation.Start(abortsItself(true));
  event.Happen(0);
  EXPECT_TRUE(operation.Aborted());
  EXPECT_FALSE(event.Awaited());
  EXPECT_EQ(notes.size(), 1U);
  notes.clear();
  operation.Start(abortsItself(false));
  event.Happen(0);
  EXPECT_FALSE(operation.Aborted());
  EXPECT_EQ(operation.Take(), 5);
}

TEST_F(TaskTest, TheEndMayDestroyTheOperation) {
  std::unique_ptr<Operation<std::string>> operation;
  std::string result;
  operation = std::make_unique<Operation<std::string>>([&] {
    result = operation->Take();
    operation.reset();
  });
  operation->Start(Outer());
  event.Happen(1);
  event.Happen(2);
  EXPECT_EQ(result, "3");
}

}  // namespace
}  // namespace quillon::testing
