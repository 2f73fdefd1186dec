// Runs one Task from a part of the program that is no coroutine: starts it, lets it go on when what
// it waits for has come, keeps its result, and ends it before its time.
//
// The result, an exception too, belongs to the Task that gave it: an Operation that was aborted, or
// has another Task by now, never tells the result of an earlier one.
#pragma once

#include <functional>
#include <utility>

#include "core/Task.h"

namespace quillon {

template <typename T>
class Operation final : private Resumer {
 public:
  // `ended` is called when the Task has a result, from the event that it waited for last; not when
  // it is aborted. It may start the next Task, and destroy the Operation.
  explicit Operation(std::function<void()> ended = {}) : ended_(std::move(ended)) {}
  ~Operation() override = default;
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

  // Runs the Task up to its first wait. Nothing may be running.
  void Start(Task<T> task) {
    aborted_ = false;
    task_ = std::move(task);
    Resume(task_.FirstStep(*this));
  }

  bool Running() const noexcept { return !task_.IsEmpty() && !task_.HasEnded(); }
  bool Aborted() const noexcept { return aborted_; }

  // The result of the Task that has ended, once; throws what it has thrown.
  T Take() {
    auto task = std::move(task_);
    return task.Take();
  }

  // Destroys the Task where it waits; from inside the Task itself, when it waits next.
  void Abort() {
    if (!Running()) return;
    aborted_ = true;
    if (!onStack_) task_ = {};
  }

 private:
  void Resume(std::coroutine_handle<> waiting) override {
    onStack_ = true;
    waiting.resume();
    onStack_ = false;
    if (!task_.HasEnded()) {
      if (aborted_) task_ = {};
      return;
    }
    aborted_ = false;  // too late
    if (const auto ended = ended_) ended();
  }

  std::function<void()> ended_;
  Task<T> task_;
  bool onStack_ = false;
  bool aborted_ = false;
};

}  // namespace quillon
