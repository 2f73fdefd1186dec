// The bytes of one connection between its socket and what they say: as they are, or within TLS.
//
// What TLS has made of a text is kept here until the socket takes it, and can be cut and shaped as
// replies can.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Shape.h"
#include "TlsSession.h"
#include "UniqueFd.h"

namespace mailhost {

// What goes wrong with the bytes of TLS.
struct WireFaults {
  Shape shape{};
  std::optional<std::uint64_t> limit{};  // so many bytes are sent, then the connection is closed
};

class Wire {
 public:
  enum class State {
    kDrained,  // nothing is left
    kBlocked,  // the socket takes no more for now
    kWaiting,  // the gap of the shape
    kCut,      // the limit is reached
    kFailed,   // the connection is broken
  };

  explicit Wire(UniqueFd socket) : socket_(std::move(socket)) {}

  int Socket() const { return socket_.Get(); }
  // From now on everything travels within `tls`.
  void Secure(std::unique_ptr<TlsSession> tls, const WireFaults& faults);
  const TlsSession* Tls() const { return tls_.get(); }

  enum class Received { kSome, kNone, kEnd };
  // Appends what the socket has to `text`.
  Received Receive(std::string& text);

  // Sends the first bytes of `text` and takes them off, all of them within TLS.
  State Send(std::string_view& text);
  // Sends what is left from before.
  State Flush();
  bool Empty() const { return pending_.empty(); }
  std::chrono::milliseconds Gap() const { return faults_.shape.gap; }
  // Tells the client that nothing more comes, when that can be told.
  void SayEnd();

 private:
  State SendRaw(std::string_view& bytes) const;

  UniqueFd socket_;
  std::unique_ptr<TlsSession> tls_;
  WireFaults faults_;
  std::string pending_;
};

}  // namespace mailhost
