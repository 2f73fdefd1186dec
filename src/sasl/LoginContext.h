// Who logs in, and over what connection.
#pragma once

#include <cstdint>
#include <string>

#include "ports/Crypto.h"
#include "ports/SystemLogin.h"

namespace quillon {

// UTF-8. What is empty is not there.
struct Credentials {
  std::string authorization;  // whom to act as, when that is another one than who logs in
  std::string loginName;
  std::string password;
  std::string accessToken;  // OAuth 2

  bool operator==(const Credentials&) const = default;
};

// What ties a login to the secured connection under it (RFC 5056).
struct ChannelBinding {
  std::string type;  // "tls-server-end-point"; empty: the connection has none
  std::string data;  // bytes
};

// As the client sees it, and as the server does when nobody is in between.
struct ConnectionFacts {
  std::string host;
  std::uint16_t port = 0;
  bool encrypted = false;
  ChannelBinding binding;
  std::string service = {};   // as GSSAPI has it: "smtp" or "pop"
  std::string endPoint = {};  // the data of tls-server-end-point, which systems bind logins to
};

// References, so that a secret stands in one place only: what they lead to outlives the mechanism
// that is made with them.
struct LoginContext {
  const Credentials& credentials;
  const ConnectionFacts& connection;
  const Crypto& crypto;
  const SystemLogin* system = nullptr;  // null where it makes no logins
};

}  // namespace quillon
