// The command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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
  bool help = false;
};

extern const char* const kUsage;

// Throws UsageError.
Options ParseOptions(int argc, const char* const* argv);

}  // namespace mailhost
