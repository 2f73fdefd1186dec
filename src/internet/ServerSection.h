// What the configuration file says of a server: the keys of a section "Server NAME".
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "internet/ServerSecurity.h"
#include "oauth/AccessTokens.h"

namespace quillon {

// What is not set is not there. Texts are UTF-8.
struct ServerSection {
  struct Protocol {
    std::optional<std::string> host;
    std::optional<std::uint16_t> port;
    std::optional<ConnectionSecurity> security;
    std::optional<std::string> user;
    std::optional<std::string> password;
  };

  Protocol smtp;
  Protocol pop;
  std::optional<std::string> smtpSender;  // of the envelope, a bare address
  std::optional<std::vector<std::string>> authentication;
  std::optional<bool> plainTextLogin;
  std::optional<bool> extensions;
  std::optional<bool> revocation;
  std::optional<bool> deliveryStatus;
  std::optional<bool> detailedErrors;
  std::optional<bool> rawHeaders;
  std::optional<std::string> charset;
  std::optional<bool> replaceCharacters;
  std::optional<bool> modernHeaders;
  std::optional<bool> expandTnef;
  std::optional<bool> trackUnread;
  std::optional<std::string> pin;
  std::optional<std::string> clientCertificate;
  OAuthAccount oauth;
};

struct ServerKey {
  std::string_view name;
  bool isSecret;
  std::string_view form;  // what a value looks like: the end of a sentence
  // False for a value that cannot be understood. None is empty.
  bool (*set)(ServerSection& section, const std::string& value);
};

std::span<const ServerKey> ServerKeys();

// In any case; null for a key that nobody knows.
const ServerKey* FindServerKey(std::string_view name);

}  // namespace quillon
