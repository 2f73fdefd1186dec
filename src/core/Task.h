// A coroutine that gives one result, awaited by another coroutine or run by an Operation.
//
// Ownership: a Task owns its frame. It is lazy: nothing of it runs before it is awaited. Destroying
// a Task destroys the frame where it is suspended, and with it, from the inside out, every Task
// that the frame is awaiting; what a frame must give back whatever happens (a file, a connection)
// it holds in objects whose destructors do it. A Task that is running (on the stack) must not be
// destroyed; Operation sees to that. An exception that leaves the coroutine is thrown to whoever
// awaits it.
//
// Parameters live in the frame when they are taken by value; what is taken by reference must
// outlive the Task. A lambda that is itself a coroutine keeps its captures in the lambda, not in
// the frame: let it return the Task of a function instead.
//
// An awaitable that suspends keeps a Suspended, made of the handle that await_suspend is given, and
// goes on with Resume() once. It takes its Suspended back in its destructor, because the frame that
// holds it may be destroyed while it waits.
#pragma once

#include <coroutine>
#include <exception>
#include <optional>
#include <utility>

namespace quillon {

// Lets the coroutines of one operation go on; an Operation.
class Resumer {
 public:
  Resumer() = default;
  virtual ~Resumer() = default;
  Resumer(const Resumer&) = delete;
  Resumer& operator=(const Resumer&) = delete;

  virtual void Resume(std::coroutine_handle<> waiting) = 0;
};

class TaskPromise {
 public:
  std::suspend_always initial_suspend() noexcept { return {}; }

  struct GoOnWithAwaiter {
    bool await_ready() const noexcept { return false; }
    // The frame may be gone when resume returns, so nothing may follow it.
    template <typename Promise>
    void await_suspend(std::coroutine_handle<Promise> ended) const noexcept {
      if (const auto awaiter = ended.promise().awaiter_) awaiter.resume();
    }
    void await_resume() const noexcept {}
  };
  GoOnWithAwaiter final_suspend() noexcept { return {}; }
  void unhandled_exception() noexcept { exception_ = std::current_exception(); }

  void SetResumer(Resumer* resumer) noexcept { resumer_ = resumer; }
  Resumer* GetResumer() const noexcept { return resumer_; }
  // The coroutine that goes on when this one has ended.
  void SetAwaiter(std::coroutine_handle<> awaiter) noexcept { awaiter_ = awaiter; }

 protected:
  void Rethrow() const {
    if (exception_) std::rethrow_exception(exception_);
  }

 private:
  Resumer* resumer_ = nullptr;
  std::coroutine_handle<> awaiter_;
  std::exception_ptr exception_;
};

// A coroutine that waits for an event: how it goes on when the event has come.
class Suspended {
 public:
  Suspended() = default;
  template <typename Promise>
  explicit Suspended(std::coroutine_handle<Promise> waiting)
      : resumer_(waiting.promise().GetResumer()), waiting_(waiting) {}

  explicit operator bool() const noexcept { return static_cast<bool>(waiting_); }
  // The awaitable that holds this may be gone when it returns.
  void Resume() {
    const auto waiting = std::exchange(waiting_, nullptr);
    resumer_->Resume(waiting);
  }

 private:
  Resumer* resumer_ = nullptr;
  std::coroutine_handle<> waiting_;
};

template <typename T = void>
class [[nodiscard]] Task;

template <typename T>
class TaskResult : public TaskPromise {
 public:
  Task<T> get_return_object() noexcept;
  template <typename Value>
  void return_value(Value&& value) {
    value_.emplace(std::forward<Value>(value));
  }
  T Take() {
    Rethrow();
    return std::move(*value_);
  }

 private:
  std::optional<T> value_;
};

template <>
class TaskResult<void> : public TaskPromise {
 public:
  Task<void> get_return_object() noexcept;
  void return_void() noexcept {}
  void Take() const { Rethrow(); }
};

template <typename T>
class [[nodiscard]] Task {
 public:
  using promise_type = TaskResult<T>;

  Task() = default;
  explicit Task(std::coroutine_handle<promise_type> frame) noexcept : frame_(frame) {}
  Task(Task&& other) noexcept : frame_(std::exchange(other.frame_, nullptr)) {}
  Task& operator=(Task&& other) noexcept {
    Task(std::move(other)).Swap(*this);
    return *this;
  }
  ~Task() {
    if (frame_) frame_.destroy();
  }

  bool IsEmpty() const noexcept { return !frame_; }
  bool HasEnded() const noexcept { return frame_ && frame_.done(); }

  // For Operation: the first step, by which the Task and all that it awaits learn who lets them go
  // on; and the result of a Task that has ended.
  std::coroutine_handle<> FirstStep(Resumer& resumer) const noexcept {
    frame_.promise().SetResumer(&resumer);
    return frame_;
  }
  T Take() { return frame_.promise().Take(); }

  class Awaiter {
   public:
    explicit Awaiter(std::coroutine_handle<promise_type> frame) noexcept : frame_(frame) {}
    bool await_ready() const noexcept { return false; }
    // A Task that ends without waiting does not suspend its awaiter, so that a loop over many of
    // them needs no stack.
    template <typename Promise>
    bool await_suspend(std::coroutine_handle<Promise> awaiter) const {
      frame_.promise().SetResumer(awaiter.promise().GetResumer());
      frame_.resume();
      if (frame_.done()) return false;
      frame_.promise().SetAwaiter(awaiter);
      return true;
    }
    T await_resume() const { return frame_.promise().Take(); }

   private:
    std::coroutine_handle<promise_type> frame_;
  };
  Awaiter operator co_await() const& noexcept { return Awaiter(frame_); }

 private:
  void Swap(Task& other) noexcept { std::swap(frame_, other.frame_); }

  std::coroutine_handle<promise_type> frame_;
};

template <typename T>
Task<T> TaskResult<T>::get_return_object() noexcept {
  return Task<T>(std::coroutine_handle<TaskResult<T>>::from_promise(*this));
}
inline Task<void> TaskResult<void>::get_return_object() noexcept {
  return Task<void>(std::coroutine_handle<TaskResult<void>>::from_promise(*this));
}

}  // namespace quillon
