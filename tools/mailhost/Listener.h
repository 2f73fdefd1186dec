// Accepts connections on one port of 127.0.0.1.
#pragma once

#include <cstdint>
#include <functional>

#include "EventLoop.h"
#include "UniqueFd.h"

namespace mailhost {

class Listener : public EventHandler {
 public:
  using Accepted = std::function<void(UniqueFd)>;

  // Listens at once; port 0 means any free port. Throws std::system_error when the port is taken.
  Listener(EventLoop& loop, std::uint16_t port, Accepted accepted);
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  std::uint16_t Port() const { return port_; }

  void OnEvents(std::uint32_t events) override;

 private:
  EventLoop& loop_;
  Accepted accepted_;
  UniqueFd socket_;
  std::uint16_t port_ = 0;
};

}  // namespace mailhost
