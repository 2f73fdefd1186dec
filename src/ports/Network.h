// Name look-up and TCP streams, neither of which ever blocks: results and events arrive as
// callbacks of the event loop.
//
// A ByteStream is all that the layers above know of a connection, so that a secured stream can
// stand in its place.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ports/EventLoop.h"

namespace quillon {

struct SocketAddress {
  bool isIPv6 = false;
  std::array<std::uint8_t, 16> bytes{};  // network order; an IPv4 address takes the first four
  std::uint32_t scope = 0;               // IPv6 zone
  std::uint16_t port = 0;
};

struct IoResult {
  enum class Status { Ok, WouldBlock, Closed, Failed };

  Status status = Status::Ok;
  std::size_t count = 0;  // bytes moved, when Ok
  int error = 0;          // the system's number, when Failed
};

class ByteStream {
 public:
  // Called from the loop, never from inside a call of the stream itself. A handler may close the
  // stream it is called for, and may destroy it.
  class Handler {
   public:
    virtual ~Handler() = default;
    virtual void OnStreamConnected() = 0;
    virtual void OnStreamFailed(int error) = 0;  // could not connect
    virtual void OnStreamReadable() = 0;         // bytes, the end or a failure can be read
    virtual void OnStreamWritable() = 0;  // after a Write that would have blocked or was cut short
  };

  ByteStream() = default;
  virtual ~ByteStream() = default;  // closes
  ByteStream(const ByteStream&) = delete;
  ByteStream& operator=(const ByteStream&) = delete;

  virtual void SetHandler(Handler& handler) = 0;

  // Closed: the peer has sent its last byte.
  virtual IoResult Read(std::span<char> buffer) = 0;
  // May take less than all; then OnStreamWritable follows.
  virtual IoResult Write(std::string_view bytes) = 0;

  // Switches OnStreamReadable off and on (on at the start). What arrives meanwhile is announced
  // when it is on again.
  virtual void WantRead(bool want) = 0;

  // The own end of a connected stream as text ("192.0.2.7"), empty when unknown.
  virtual std::string LocalAddress() const = 0;
  virtual bool IsIPv6() const = 0;
};

class Network {
 public:
  // Destroying it gives the look-up up: the callback will not come.
  class Lookup {
   public:
    virtual ~Lookup() = default;
  };
  using LookupResult = std::function<void(std::vector<SocketAddress> addresses, int error)>;

  virtual ~Network() = default;

  // A name, or a numeric address. No address in the result: the look-up failed with `error`.
  virtual std::unique_ptr<Lookup> Resolve(const std::string& host, std::uint16_t port,
                                          LookupResult result) = 0;

  // Starts to connect; null when the system cannot even start (out of sockets, no such protocol).
  virtual std::unique_ptr<ByteStream> Connect(const SocketAddress& address,
                                              ByteStream::Handler& handler) = 0;

  // The name of this machine, as the system has it; may be empty.
  virtual std::string LocalHostName() = 0;
};

// The system's own loop and network: one object, because sockets are what the loop waits for.
class NetworkLoop : public EventLoop, public Network {};

}  // namespace quillon
