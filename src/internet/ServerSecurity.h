// How a server is talked to beyond what the oldest servers understand: encryption, login and
// extensions of its protocol. With the defaults nothing of it is used.
#pragma once

#include <cstdint>
#include <string>

#include "oauth/AccessTokens.h"
#include "sasl/Choice.h"
#include "sasl/LoginContext.h"

namespace quillon {

// The numbers are those of SMTPSecurity and POPSecurity.
enum class ConnectionSecurity : std::int16_t {
  None = 0,
  StartTlsIfOffered = 1,  // whoever is in between can take the offer away
  StartTls = 2,
  Tls = 3,  // from the first byte on
};

struct ServerSecurity {
  ConnectionSecurity connection = ConnectionSecurity::None;
  std::string pin;                // as ReadPin takes it; empty: the certificate is checked
  bool revocation = false;        // issuers are asked whether they have taken a certificate back
  std::string clientCertificate;  // in the user's store: its subject or thumbprint; empty: none

  LoginRules login;
  // For POP3 the name and the password of the mailbox itself. Without a name and a token there is
  // no login over SMTP.
  Credentials credentials;
  OAuthAccount oauth;  // asked for a token when it has an address and the credentials have none

  bool extensions = false;
  bool deliveryStatus = false;  // SMTP: what the message says of reports is told the server (DSN)

  bool HasLogin() const noexcept {
    return !credentials.loginName.empty() || HasToken() || !login.wanted.empty();
  }
  bool HasToken() const noexcept {
    return !credentials.accessToken.empty() || !oauth.tokenUrl.empty();
  }
  // Whether the server is asked what it can do.
  bool AsksForMore() const noexcept {
    return connection != ConnectionSecurity::None || extensions || deliveryStatus;
  }

  bool operator==(const ServerSecurity&) const = default;
};

}  // namespace quillon
