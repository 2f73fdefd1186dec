#include "bench/support/BareMail.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace quillon::bench {

std::string Base64Lines(std::size_t size) {
  std::string lines;
  while (lines.size() < size) lines += std::string(76, 'Q') + "\r\n";
  lines.resize(size);
  return lines;
}

BareSocket::BareSocket(std::uint16_t port) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the socket interface
  const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
  if (::connect(socket_, generic, sizeof address) != 0) throw std::runtime_error("no connection");
}

BareSocket::~BareSocket() {
  ::close(socket_);
}

void BareSocket::Write(std::string_view bytes) const {
  while (!bytes.empty()) {
    const auto count = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) throw std::runtime_error("the bare socket breaks off");
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

std::size_t BareSocket::Ask(std::string_view bytes, std::string_view begin,
                            std::string_view end) const {
  Write(bytes);
  std::array<char, 64UL * 1024> buffer;
  std::size_t size = 0;
  std::string_view answer;
  while (!answer.ends_with(end)) {
    const auto count = ::recv(socket_, buffer.data() + size, buffer.size() - size, 0);
    if (count <= 0) throw std::runtime_error("the host says nothing to the bare socket");
    size += static_cast<std::size_t>(count);
    answer = {buffer.data(), size};
  }
  if (!answer.starts_with(begin)) throw std::runtime_error("refused: " + std::string(answer));
  return size;
}

BareSmtp::BareSmtp(std::uint16_t port, const std::string& sender, const std::string& recipient)
    : socket_(port),
      mail_("MAIL FROM: <" + sender + ">\r\n"),
      rcpt_("RCPT TO: <" + recipient + ">\r\n") {
  socket_.Ask({}, "220");
  socket_.Ask("HELO localhost\r\n", "250");
}

void BareSmtp::SayEnvelope() const {
  socket_.Ask(mail_, "250");
  socket_.Ask(rcpt_, "250");
  socket_.Ask("DATA\r\n", "354");
}

void BareSmtp::Send(const std::string& message) const {
  SayEnvelope();
  socket_.Ask(message + "\r\n.\r\n", "250");
}

void BareSmtp::Send(std::uint64_t bytes, const std::string& block) const {
  SayEnvelope();
  while (bytes > 0) {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(bytes, block.size()));
    socket_.Write(std::string_view(block).substr(0, count));
    bytes -= count;
  }
  socket_.Ask("\r\n.\r\n", "250");
}

BarePop::BarePop(std::uint16_t port) : socket_(port) {
  socket_.Ask({}, "+OK");
  socket_.Ask("USER bench\r\n", "+OK");
  socket_.Ask("PASS bench\r\n", "+OK");
}

std::size_t BarePop::LoadHeaders(std::size_t count) const {
  std::size_t bytes = 0;
  for (std::size_t number = 1; number <= count; ++number) {
    bytes += socket_.Ask("TOP " + std::to_string(number) + " 0\r\n", "+OK", "\r\n.\r\n");
  }
  return bytes;
}

}  // namespace quillon::bench
