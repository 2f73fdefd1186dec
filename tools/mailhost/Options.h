// The command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TlsServer.h"

namespace mailhost {

struct Options {
  std::optional<std::uint16_t> smtpPort;
  std::optional<std::uint16_t> popPort;
  std::string store;
  std::optional<std::string> user;
  std::optional<std::string> password;
  std::vector<std::string> faults;
  std::string log;
  bool noStore = false;  // accept messages and discard them
  bool noLock = false;   // let several POP3 sessions share the maildrop

  std::optional<std::uint16_t> smtpsPort;
  std::optional<std::uint16_t> popsPort;
  TlsSettings tls;
  bool startTls = false;  // STLS too
  bool requireTls = false;
  bool requireLogin = false;
  bool apop = false;
  std::optional<std::string> token;
  std::vector<std::string> mechanisms;
  std::vector<std::string> smtpCapabilities{"PIPELINING", "SIZE", "8BITMIME"};
  std::vector<std::string> popCapabilities{"USER", "TOP", "UIDL", "RESP-CODES", "PIPELINING"};

  bool help = false;

  bool NeedsTls() const { return smtpsPort || popsPort || startTls; }
};

extern const char* const kUsage;

// Throws UsageError.
Options ParseOptions(int argc, const char* const* argv);

}  // namespace mailhost
