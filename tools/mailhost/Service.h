// What all sessions of a host offer and ask for.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "FaultRules.h"
#include "TlsServer.h"

namespace mailhost {

// Who may log in. Without a user any name and password are good.
struct Account {
  std::optional<std::string> user{};
  std::string password{};
  std::optional<std::string> token{};  // of the mechanisms that take one

  bool Accepts(std::string_view name, std::string_view secret) const {
    return !user || (name == *user && secret == password);
  }
};

struct Service {
  std::vector<FaultRule> rules{};
  std::optional<TlsServer> tls{};
  bool offersTls = false;  // STARTTLS and STLS
  bool requiresTls = false;
  bool requiresLogin = false;  // before MAIL
  bool offersApop = false;
  Account account{};
  std::vector<std::string> mechanisms{};  // of AUTH, in capitals
  std::vector<std::string> smtpCapabilities{};
  std::vector<std::string> popCapabilities{};
};

}  // namespace mailhost
