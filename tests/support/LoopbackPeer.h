// The other end of a real connection: listens on 127.0.0.1, takes one connection on a thread of its
// own and plays what the test gives it, with blocking calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <thread>

#include "platform/SystemAddress.h"

namespace quillon::testing {

class LoopbackPeer {
 public:
  class Connection {
   public:
    explicit Connection(SystemSocket socket) : socket_(socket) {}
    // False when the other end has closed.
    bool Send(std::string_view bytes);
    // That many bytes, fewer when the other end closes before.
    std::string Receive(std::size_t wanted = std::numeric_limits<std::size_t>::max());
    std::string ReceiveLine();

   private:
    SystemSocket socket_;
  };

  // There must be a NetworkLoop while it lives.
  explicit LoopbackPeer(std::function<void(Connection&)> play);
  // Waits for the play to end.
  ~LoopbackPeer() { Join(); }

  void Join();
  const SocketAddress& Address() const noexcept { return address_; }

 private:
  SystemSocket listener_;
  SocketAddress address_;
  std::thread thread_;
};

}  // namespace quillon::testing
