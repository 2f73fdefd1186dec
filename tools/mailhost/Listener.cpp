#include "Listener.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <netinet/tcp.h>
#include <string>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <system_error>
#include <utility>

namespace mailhost {

namespace {

// How long to leave the queue alone when no descriptor is left for a new connection.
constexpr std::chrono::milliseconds kOutOfDescriptorsPause{50};

[[noreturn]] void Fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

Listener::Listener(EventLoop& loop, std::uint16_t port, Accepted accepted)
    : loop_(loop),
      accepted_(std::move(accepted)),
      socket_(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
  if (!socket_) Fail("socket");
  const int on = 1;
  setsockopt(socket_.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* raw = reinterpret_cast<sockaddr*>(&address);
  if (bind(socket_.Get(), raw, sizeof address) != 0 || listen(socket_.Get(), SOMAXCONN) != 0) {
    Fail("cannot listen on 127.0.0.1:" + std::to_string(port));
  }
  socklen_t length = sizeof address;
  if (getsockname(socket_.Get(), raw, &length) != 0) Fail("getsockname");
  port_ = ntohs(address.sin_port);
  loop_.Watch(socket_.Get(), EPOLLIN, *this);
}

void Listener::OnEvents(std::uint32_t /*events*/) {
  for (;;) {
    UniqueFd fd(accept4(socket_.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!fd) {
      if (errno == EINTR || errno == ECONNABORTED) continue;
      if (errno == EMFILE || errno == ENFILE) {
        loop_.Change(socket_.Get(), 0, *this);
        loop_.After(kOutOfDescriptorsPause,
                    [this] { loop_.Change(socket_.Get(), EPOLLIN, *this); });
      }
      return;
    }
    const int on = 1;
    setsockopt(fd.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    accepted_(std::move(fd));
  }
}

}  // namespace mailhost
