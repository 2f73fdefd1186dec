// Receives the text that follows DATA into the store.
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
  bool Active() const { return active_; }
  // Returns how many of `bytes` it took. Inactive afterwards when the end was among them.
  std::size_t Take(std::string_view bytes);
  // Keeps the message that has come to its end; false when that fails.
  bool Commit(const Envelope& envelope);
  // Forgets the message; the rest of it is still taken.
  void Discard() { delivery_ = std::make_unique<DiscardingDelivery>(); }

 private:
  Log& log_;
  const BeginDelivery begin_;
  bool active_ = false;
  DotDecoder decoder_;
  std::uint64_t size_ = 0;
  std::unique_ptr<Delivery> delivery_;
};

}  // namespace mailhost
