#include "platform/SystemAddress.h"

#ifndef _WIN32
#include <netdb.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <array>
#include <cstring>

namespace quillon {

std::size_t ToSystemAddress(const SocketAddress& address, sockaddr_storage& storage) {
  storage = {};
  if (address.isIPv6) {
    sockaddr_in6 system{};
    system.sin6_family = AF_INET6;
    system.sin6_port = htons(address.port);
    system.sin6_scope_id = address.scope;
    std::memcpy(&system.sin6_addr, address.bytes.data(), 16);
    std::memcpy(&storage, &system, sizeof system);
    return sizeof system;
  }
  sockaddr_in system{};
  system.sin_family = AF_INET;
  system.sin_port = htons(address.port);
  std::memcpy(&system.sin_addr, address.bytes.data(), 4);
  std::memcpy(&storage, &system, sizeof system);
  return sizeof system;
}

void AppendAddress(const sockaddr& address, std::uint16_t port,
                   std::vector<SocketAddress>& addresses) {
  SocketAddress result;
  result.port = port;
  if (address.sa_family == AF_INET) {
    sockaddr_in system{};
    std::memcpy(&system, &address, sizeof system);
    std::memcpy(result.bytes.data(), &system.sin_addr, 4);
  } else if (address.sa_family == AF_INET6) {
    sockaddr_in6 system{};
    std::memcpy(&system, &address, sizeof system);
    result.isIPv6 = true;
    result.scope = static_cast<std::uint32_t>(system.sin6_scope_id);
    std::memcpy(result.bytes.data(), &system.sin6_addr, 16);
  } else {
    return;
  }
  addresses.push_back(result);
}

int LookUpAndWait(const std::string& host, std::uint16_t port,
                  std::vector<SocketAddress>& addresses) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int error = ::getaddrinfo(host.c_str(), nullptr, &hints, &found);
  if (error != 0) return error;
  for (const auto* entry = found; entry != nullptr; entry = entry->ai_next) {
    AppendAddress(*entry->ai_addr, port, addresses);
  }
  ::freeaddrinfo(found);
  return 0;
}

void CloseSystemSocket(SystemSocket socket) {
#ifdef _WIN32
  ::closesocket(socket);
#else
  ::close(socket);
#endif
}

std::string LocalAddressText(SystemSocket socket) {
  sockaddr_storage storage{};
  socklen_t size = sizeof storage;
  std::array<char, NI_MAXHOST> text{};
  if (::getsockname(socket, reinterpret_cast<sockaddr*>(&storage), &size) != 0 ||
      ::getnameinfo(reinterpret_cast<const sockaddr*>(&storage), size, text.data(),
                    static_cast<socklen_t>(text.size()), nullptr, 0, NI_NUMERICHOST) != 0) {
    return {};
  }
  return text.data();
}

}  // namespace quillon
