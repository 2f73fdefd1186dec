// Receives a message into the store: the text that follows DATA, or the chunks of BDAT.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "Delivery.h"
#include "DotDecoder.h"
#include "Log.h"

namespace mailhost {

// Starts keeping a message; null when that fails.
using BeginDelivery = std::function<std::unique_ptr<Delivery>()>;

class ContentReceiver {
 public:
  ContentReceiver(Log& log, BeginDelivery begin) : log_(log), begin_(std::move(begin)) {}

  // False when the message cannot be stored.
  bool Begin();
  // The next `size` bytes, as they stand, are more of the message, or the first of one.
  bool BeginChunk(std::uint64_t size);
  bool Active() const { return active_; }
  // Returns how many of `bytes` it took. Inactive afterwards when the end was among them.
  std::size_t Take(std::string_view bytes);
  std::uint64_t Size() const { return size_; }
  // A message has begun and is neither kept nor dropped.
  bool HasMessage() const { return delivery_ != nullptr; }
  // Keeps the message that has come to its end; false when that fails.
  bool Commit(const Envelope& envelope);
  // Forgets the message; the rest of it is still taken.
  void Discard() { delivery_ = std::make_unique<DiscardingDelivery>(); }
  void Drop() { delivery_.reset(); }

 private:
  std::size_t TakeChunk(std::string_view bytes);

  Log& log_;
  const BeginDelivery begin_;
  bool active_ = false;
  bool isChunk_ = false;
  std::uint64_t chunkLeft_ = 0;
  DotDecoder decoder_;
  std::uint64_t size_ = 0;
  std::unique_ptr<Delivery> delivery_;
};

}  // namespace mailhost
