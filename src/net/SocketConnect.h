// Makes the connection: name look-up, then each of the host's addresses in turn, all within one
// deadline.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ports/Network.h"

namespace quillon {

// Four decimal numbers from 0 to 255 without leading zeros; anything else is a name.
std::optional<SocketAddress> ParseDottedAddress(std::string_view host);

// "192.0.2.7", or eight groups of hexadecimal digits.
std::string AddressText(const SocketAddress& address);

class SocketConnect : private ByteStream::Handler {
 public:
  // What the caller gets instead of a stream.
  static constexpr std::int32_t kNotConnected = 2;  // no answer in time, refused, or no such host
  static constexpr std::int32_t kNotStarted = 4;    // the system refused to start, eleven times

  // A stream, or null and one of the codes.
  using Result = std::function<void(std::unique_ptr<ByteStream> stream, std::int32_t code)>;

  SocketConnect(EventLoop& loop, Network& network);

  // The result comes from the loop, once, unless cancelled. Times in milliseconds.
  void Start(const std::string& host, std::uint16_t port, TickCount timeout, Result result);
  void Cancel();

  // The system's number for the last address that failed.
  int LastError() const noexcept { return lastError_; }
  // The address that was tried last, as text.
  std::string Address() const;

 private:
  void OnResolved(std::vector<SocketAddress> addresses, int error);
  void TryNext();
  void OnStreamConnected() override;
  void OnStreamFailed(int error) override;
  void OnStreamReadable() override {}
  void OnStreamWritable() override {}
  void Finish(std::unique_ptr<ByteStream> stream, std::int32_t code);

  EventLoop& loop_;
  Network& network_;
  Result result_;
  std::unique_ptr<Network::Lookup> lookup_;
  std::vector<SocketAddress> addresses_;
  std::size_t next_ = 0;        // of the addresses
  std::size_t notStarted_ = 0;  // attempts that the system refused in a row
  std::unique_ptr<ByteStream> stream_;
  TickCount deadline_ = 0;
  Timer overall_;  // look-up and every attempt
  Timer attempt_;  // one address's share of the time
  Timer again_;
  int lastError_ = 0;
};

}  // namespace quillon
