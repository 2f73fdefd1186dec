// What is still to be sent on one connection: text, message content, pauses and the close, in
// order.
//
// A shape cuts what is sent into pieces, each a send of its own, so that the other side is seen to
// put a reply together however it arrives.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "Log.h"
#include "Shape.h"
#include "Wire.h"

namespace mailhost {

// Bytes that are made while they are sent, so that their number does not matter.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  // Appends the next bytes to `out`; false when these were the last.
  virtual bool Read(std::string& out) = 0;
};

class Outbox {
 public:
  enum class State {
    kDrained,  // nothing is left
    kBlocked,  // the socket takes no more for now
    kWaiting,  // a pause: flush again after Wait()
    kClose,    // the queued close is reached: the end is told, then the connection closed
    kCut,      // the connection is closed without a word
    kFailed,   // the connection is broken
  };

  Outbox(Log& log, Protocol protocol) : log_(log), protocol_(protocol) {}

  // Holds for everything queued from now on.
  void SetShape(const Shape& shape) { shape_ = shape; }
  void Text(std::string bytes);
  void Content(std::unique_ptr<ByteSource> source);
  void Pause(std::chrono::milliseconds length);
  void Close();
  // The same, as if the connection broke.
  void Cut();

  // Sends what the wire takes now.
  State Flush(Wire& wire);
  std::chrono::milliseconds Wait() const { return wait_; }

  // False while a client that does not read, a pause or a close should keep further commands
  // waiting.
  bool HasRoom() const;
  bool Empty() const { return items_.empty() && sent_ == buffer_.size(); }

 private:
  struct Item {
    enum class Kind { kText, kContent, kPause, kClose, kCut } kind;
    Shape shape{};
    std::string text{};
    std::unique_ptr<ByteSource> source{};
    std::uint64_t produced = 0;
    std::chrono::milliseconds pause{0};
  };

  // Moves the next bytes into the empty buffer; anything but kDrained says why there are none.
  State Refill();
  State Waiting(std::chrono::milliseconds length);
  // Appends bytes of the first item; true when the item is used up.
  bool TakeFrom(Item& item);

  Log& log_;
  const Protocol protocol_;
  Shape shape_;
  std::deque<Item> items_;
  std::string buffer_;  // what is being sent, all of one shape
  std::size_t sent_ = 0;
  Shape bufferShape_;
  std::chrono::milliseconds wait_{0};
};

}  // namespace mailhost
