// Our socket addresses and the system's, in both directions. The sockets interface is the same on
// both systems but for its headers.
#pragma once

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <netinet/in.h>
#include <sys/socket.h>
#endif

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ports/Network.h"

namespace quillon {

#ifdef _WIN32
using SystemSocket = SOCKET;
using SystemIoSize = int;
#else
using SystemSocket = int;
using SystemIoSize = std::size_t;
#endif

// Returns the size of what was filled in.
std::size_t ToSystemAddress(const SocketAddress& address, sockaddr_storage& storage);

// Addresses of other families are left out.
void AppendAddress(const sockaddr& address, std::uint16_t port,
                   std::vector<SocketAddress>& addresses);

// Looks the name up and waits for the answer; returns the system's error number. For a helper
// thread.
int LookUpAndWait(const std::string& host, std::uint16_t port,
                  std::vector<SocketAddress>& addresses);

void CloseSystemSocket(SystemSocket socket);

// The own end of a socket in numbers; empty when unknown.
std::string LocalAddressText(SystemSocket socket);

}  // namespace quillon
