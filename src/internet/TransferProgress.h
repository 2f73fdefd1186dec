// How far a transfer is and how long it will still take, in words for its user.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "ports/EventLoop.h"

namespace quillon {

class TransferProgress {
 public:
  enum class Unit { Bytes, Messages };

  explicit TransferProgress(Unit unit = Unit::Bytes, TickCount now = 0);

  // `total` is 0 while it is not known. Fewer done than before begins another transfer of the same
  // operation.
  void Update(std::uint64_t done, std::uint64_t total, TickCount now);

  std::uint64_t Done() const noexcept { return done_; }
  std::uint64_t Total() const noexcept { return total_; }

  // As in "1.2 MB of 5.0 MB (24 %)"; of the total what is known.
  std::string Amount() const;

  // The time since the beginning and, once there is something to tell it by, the time that is left:
  // "0:42 so far, 12 seconds left".
  std::string Time(TickCount now);

 private:
  void Measure(TickCount now);
  std::optional<double> SecondsLeft() const;

  Unit unit_;
  TickCount begin_;
  std::uint64_t done_ = 0;
  std::uint64_t total_ = 0;
  // Of the transfer that is on: since when something comes, and up to when the rate is measured.
  std::optional<TickCount> since_;
  TickCount measured_ = 0;
  std::uint64_t doneMeasured_ = 0;
  std::optional<double> rate_;  // a second
};

}  // namespace quillon
