#include "internet/TransferProgress.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace quillon {

namespace {

constexpr TickCount kMeasure = 500;    // milliseconds; what comes in less says little
constexpr TickCount kLearning = 2000;  // before that the rate is a guess
constexpr double kMemory = 5.0;        // seconds after which the past counts for a third
constexpr double kLongest = 24 * 3600.0;

std::string BytesText(std::uint64_t bytes) {
  constexpr std::array<const char*, 6> kUnits{"KB", "MB", "GB", "TB", "PB", "EB"};
  if (bytes < 1024) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
  double number = static_cast<double>(bytes) / 1024;
  std::size_t unit = 0;
  // What would be rounded to 1024.0 belongs to the next unit.
  for (; number >= 1023.95 && unit + 1 < kUnits.size(); ++unit) number /= 1024;
  char text[32];
  std::snprintf(text, sizeof text, "%.1f %s", number, kUnits[unit]);
  return text;
}

// 100 only at the end.
int PerCent(std::uint64_t done, std::uint64_t total) {
  if (done >= total) return 100;
  return std::min(static_cast<int>(100 * (static_cast<double>(done) / static_cast<double>(total))),
                  99);
}

std::string ClockText(TickCount milliseconds) {
  const auto seconds = milliseconds / 1000;
  const auto hours = seconds / 3600;
  char text[48];
  if (hours > 0) {
    std::snprintf(text, sizeof text, "%llu:%02u:%02u", static_cast<unsigned long long>(hours),
                  static_cast<unsigned>(seconds / 60 % 60), static_cast<unsigned>(seconds % 60));
  } else {
    std::snprintf(text, sizeof text, "%u:%02u", static_cast<unsigned>(seconds / 60),
                  static_cast<unsigned>(seconds % 60));
  }
  return text;
}

std::string Counted(double number, const char* unit) {
  const auto whole = static_cast<std::uint64_t>(number);
  return std::to_string(whole) + " " + unit + (whole == 1 ? "" : "s");
}

std::string DurationText(double seconds) {
  if (seconds <= 90) return Counted(std::max(std::ceil(seconds), 1.0), "second");
  if (seconds <= 90 * 60) return Counted(std::round(seconds / 60), "minute");
  return Counted(std::round(seconds / 3600), "hour");
}

}  // namespace

TransferProgress::TransferProgress(Unit unit, TickCount now) : unit_(unit), begin_(now) {}

void TransferProgress::Update(std::uint64_t done, std::uint64_t total, TickCount now) {
  if (!since_ || done < done_ || done_ == 0) {
    since_ = measured_ = now;
    doneMeasured_ = done;
    rate_.reset();
  }
  done_ = done;
  total_ = total == 0 ? 0 : std::max(done, total);
  Measure(now);
}

// The mean of the rates, the older of which count less and less.
void TransferProgress::Measure(TickCount now) {
  if (!since_ || now < measured_ + kMeasure) return;
  if (!rate_ && done_ == doneMeasured_) {  // it has not begun
    since_ = measured_ = now;
    return;
  }
  const double seconds = static_cast<double>(now - measured_) / 1000;
  const double latest = static_cast<double>(done_ - doneMeasured_) / seconds;
  const double weight = 1 - std::exp(-seconds / kMemory);
  rate_ = rate_ ? *rate_ + weight * (latest - *rate_) : latest;
  measured_ = now;
  doneMeasured_ = done_;
}

std::optional<double> TransferProgress::SecondsLeft() const {
  if (!rate_ || *rate_ <= 0 || done_ >= total_ || measured_ - *since_ < kLearning) {
    return std::nullopt;
  }
  const double seconds = static_cast<double>(total_ - done_) / *rate_;
  if (!(seconds <= kLongest)) return std::nullopt;
  return seconds;
}

std::string TransferProgress::Amount() const {
  const bool bytes = unit_ == Unit::Bytes;
  std::string text = bytes ? BytesText(done_) : std::to_string(done_);
  if (total_ != 0) text += " of " + (bytes ? BytesText(total_) : std::to_string(total_));
  if (!bytes) text += (total_ == 0 ? done_ : total_) == 1 ? " message" : " messages";
  if (total_ != 0) text += " (" + std::to_string(PerCent(done_, total_)) + " %)";
  return text;
}

std::string TransferProgress::Time(TickCount now) {
  Measure(now);
  const auto left = SecondsLeft();
  return ClockText(now - begin_) + " so far" + (left ? ", " + DurationText(*left) + " left" : "");
}

}  // namespace quillon
