// Passes on what the engine is doing: to the object of the client, and to the progress display.
//
// Events reach the client from the event loop, never from inside a session: a client may take its
// time, abort, or ask for something else.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "internet/SessionListener.h"
#include "internet/TransferProgress.h"
#include "mail/AsynchNotifier.h"
#include "ports/EventLoop.h"
#include "ports/ProgressDisplay.h"

namespace quillon {

// When and how the user sees the progress of an operation.
struct DisplayOptions {
  std::string caption;
  std::string server;
  TransferProgress::Unit unit = TransferProgress::Unit::Bytes;
  std::int16_t parts = 0;       // of ProgressDisplay; 0: it is not shown
  std::uint64_t threshold = 0;  // shown from that many bytes on
  std::function<void()> abort;
};

class ProgressReporter final : public SessionListener {
 public:
  ProgressReporter(EventLoop& loop, AsynchNotifier& notifier, ProgressDisplay& display)
      : loop_(loop), notifier_(notifier), display_(display) {}
  ~ProgressReporter() override = default;
  ProgressReporter(const ProgressReporter&) = delete;
  ProgressReporter& operator=(const ProgressReporter&) = delete;

  // `operation` of asynch_operation.
  void Begin(std::int32_t operation, DisplayOptions options);
  // Hides the display. What has not reached the client is dropped.
  void End();

  // The operation, its last counts and its last status text.
  const AsynchEvent& Last() const noexcept { return last_; }

  void OnStatus(std::string_view text) override;
  void OnProgress(std::uint64_t done, std::uint64_t total, std::uint32_t message) override;

 private:
  void Post(std::int32_t kind);
  void Display();
  // Tells again how it stands; goes on by itself, so that the user sees that time passes, and the
  // counts that came too fast to be shown at once.
  void DisplayTransfer();

  EventLoop& loop_;
  AsynchNotifier& notifier_;
  ProgressDisplay& display_;
  DisplayOptions options_;
  AsynchEvent last_;
  TransferProgress transfer_;
  bool shown_ = false;
  Timer second_{loop_, [this] { DisplayTransfer(); }};
  TickCount nextProgress_ = 0;     // when the counts are worth another event
  std::shared_ptr<bool> running_;  // of the operation whose events are on their way
};

}  // namespace quillon
