#include "support/LoopbackPeer.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace quillon::testing {

namespace {

// A peer that sends to a closed connection hears of it, and is not ended.
#ifdef _WIN32
constexpr int kNoSignal = 0;
#else
constexpr int kNoSignal = MSG_NOSIGNAL;
#endif

}  // namespace

bool LoopbackPeer::Connection::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto size = static_cast<SystemIoSize>(bytes.size());
    const auto count = ::send(socket_, bytes.data(), size, kNoSignal);
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

std::string LoopbackPeer::Connection::Receive(std::size_t wanted) {
  std::string all;
  std::array<char, 16384> buffer{};
  while (all.size() < wanted) {
    const auto size = static_cast<SystemIoSize>(std::min(buffer.size(), wanted - all.size()));
    const auto count = ::recv(socket_, buffer.data(), size, 0);
    if (count <= 0) break;
    all.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return all;
}

std::string LoopbackPeer::Connection::ReceiveLine() {
  std::string line;
  char byte = 0;
  while (::recv(socket_, &byte, 1, 0) == 1) {
    line.push_back(byte);
    if (byte == '\n') break;
  }
  return line;
}

LoopbackPeer::LoopbackPeer(std::function<void(Connection&)> play)
    : listener_(::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP)) {
  address_.bytes = {127, 0, 0, 1};
  sockaddr_storage storage{};
  auto size = static_cast<socklen_t>(ToSystemAddress(address_, storage));
  auto* const system = reinterpret_cast<sockaddr*>(&storage);
  if (::bind(listener_, system, size) != 0 || ::listen(listener_, 1) != 0 ||
      ::getsockname(listener_, system, &size) != 0) {
    throw std::runtime_error("cannot listen on 127.0.0.1");
  }
  address_.port = ntohs(reinterpret_cast<const sockaddr_in*>(&storage)->sin_port);
  thread_ = std::thread([this, play = std::move(play)] {
    const SystemSocket socket = ::accept(listener_, nullptr, nullptr);
    CloseSystemSocket(listener_);
    Connection connection(socket);
    play(connection);
    CloseSystemSocket(socket);
  });
}

void LoopbackPeer::Join() {
  if (thread_.joinable()) thread_.join();
}

}  // namespace quillon::testing
