// Watches how fast the lines of a long answer come, so that a server that sends a byte now and then
// cannot hold a session for ever.
//
// Only the time counts in which nothing was there to read: work on what has come, and a client's
// object that is told of it, may take as long as they like.
#pragma once

#include <cstdint>

#include "ports/EventLoop.h"

namespace quillon {

class DataRate {
 public:
  explicit DataRate(const EventLoop& loop) : loop_(loop) {}

  // An answer begins. `window`: so many milliseconds of waiting must bring their share; `bytesRead`
  // is what the connection has read so far, here and below.
  void Start(TickCount window, std::uint64_t bytesRead);
  // Something has come.
  void WaitEnds();
  // All that has come is done, and more is waited for. False when too little came in the window.
  bool WaitBegins(std::uint64_t bytesRead);

 private:
  const EventLoop& loop_;
  TickCount window_ = 0;
  TickCount waited_ = 0;      // in this window
  TickCount waitsSince_ = 0;  // when waiting_
  std::uint64_t bytesBefore_ = 0;
  bool waiting_ = false;
};

}  // namespace quillon
