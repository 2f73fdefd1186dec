#include "bench/support/BareSmtp.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace quillon::bench {

namespace {

constexpr std::size_t kBlockSize = 64 * 1024;

std::string Lines() {
  std::string lines;
  while (lines.size() < kBlockSize) lines += std::string(76, 'Q') + "\r\n";
  return lines;
}

}  // namespace

BareSmtp::BareSmtp(std::uint16_t port, const std::string& sender, const std::string& recipient)
    : socket_(::socket(AF_INET, SOCK_STREAM, 0)), sender_(sender), recipient_(recipient) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the socket interface
  const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
  if (::connect(socket_, generic, sizeof address) != 0) throw std::runtime_error("no connection");
  Say({}, '2');
  Say("HELO localhost\r\n", '2');
}

BareSmtp::~BareSmtp() {
  ::close(socket_);
}

void BareSmtp::Write(const char* data, std::size_t size) const {
  while (size > 0) {
    const auto count = ::send(socket_, data, size, MSG_NOSIGNAL);
    if (count <= 0) throw std::runtime_error("the bare socket breaks off");
    data += count;
    size -= static_cast<std::size_t>(count);
  }
}

void BareSmtp::Say(const std::string& line, char firstDigit) const {
  Write(line.data(), line.size());
  std::string reply;
  while (!reply.ends_with('\n')) {
    std::array<char, 512> piece{};
    const auto count = ::recv(socket_, piece.data(), piece.size(), 0);
    if (count <= 0) throw std::runtime_error("the host says nothing to the bare socket");
    reply.append(piece.data(), static_cast<std::size_t>(count));
  }
  if (reply[0] != firstDigit) throw std::runtime_error("the host refuses: " + reply);
}

void BareSmtp::Send(std::uint64_t bytes) const {
  static const auto kLines = Lines();
  Say("MAIL FROM: <" + sender_ + ">\r\n", '2');
  Say("RCPT TO: <" + recipient_ + ">\r\n", '2');
  Say("DATA\r\n", '3');
  while (bytes > 0) {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(bytes, kLines.size()));
    Write(kLines.data(), count);
    bytes -= count;
  }
  Say("\r\n.\r\n", '2');
}

}  // namespace quillon::bench
