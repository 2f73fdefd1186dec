#include "internet/ProgressReporter.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace quillon {

namespace {

// Counts change faster than anybody can look at them.
constexpr TickCount kProgressPause = 100;  // milliseconds
constexpr TickCount kSecond = 1000;

constexpr const char* kStatusTag = "ST";
constexpr const char* kProgressTag = "PR";

std::int32_t Count(std::uint64_t number) {
  return static_cast<std::int32_t>(
      std::min<std::uint64_t>(number, std::numeric_limits<std::int32_t>::max()));
}

}  // namespace

void ProgressReporter::Begin(std::int32_t operation, DisplayOptions options) {
  options_ = std::move(options);
  last_ = {};
  last_.operation = operation;
  nextProgress_ = 0;
  transfer_ = TransferProgress(options_.unit, loop_.Now());
  running_ = std::make_shared<bool>(true);
}

void ProgressReporter::End() {
  running_.reset();
  second_.Stop();
  if (std::exchange(shown_, false)) display_.Hide();
}

void ProgressReporter::Post(std::int32_t kind) {
  if (!notifier_.Registered() || running_ == nullptr) return;
  last_.kind = kind;
  last_.tag = kind == asynch_kind::kStatus ? kStatusTag : kProgressTag;
  loop_.Post([this, event = last_, running = std::weak_ptr(running_)] {
    if (!running.expired()) notifier_.Post(event);
  });
}

void ProgressReporter::OnStatus(std::string_view text) {
  last_.text = text;
  Post(asynch_kind::kStatus);
  if (shown_) display_.SetLine(ProgressDisplay::Line::Status, last_.text);
}

void ProgressReporter::OnProgress(std::uint64_t done, std::uint64_t total, std::uint32_t message) {
  last_.done = Count(done);
  last_.total = Count(total);
  last_.message = Count(message);
  const auto now = loop_.Now();
  transfer_.Update(done, total, now);
  if (now < nextProgress_) return;
  nextProgress_ = now + kProgressPause;
  Post(asynch_kind::kProgress);
  if (options_.parts != 0 && std::max(done, total) >= options_.threshold) Display();
}

void ProgressReporter::Display() {
  if (!std::exchange(shown_, true)) {
    display_.Show(options_.caption, options_.parts, options_.abort);
    display_.SetLine(ProgressDisplay::Line::Status, last_.text);
    display_.SetLine(ProgressDisplay::Line::Server, options_.server);
  }
  DisplayTransfer();
}

void ProgressReporter::DisplayTransfer() {
  const auto now = loop_.Now();
  display_.SetPosition(transfer_.Done(), transfer_.Total());
  display_.SetLine(ProgressDisplay::Line::Amount, transfer_.Amount());
  display_.SetLine(ProgressDisplay::Line::Time, transfer_.Time(now));
  second_.Start(kSecond);
}

}  // namespace quillon
