// What the process is started for.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillon {

enum class StartMode {
  Serve,
  Register,
  Unregister,
  RegisterPerUser,
  UnregisterPerUser,
  ShowHelp,
  ShowVersion,
  Refuse,
};

struct CommandLine {
  StartMode mode = StartMode::Serve;
  std::wstring unknown;            // what is refused
  std::vector<std::wstring> rest;  // from the first argument on that is no switch
};

// Switches begin with '-' or '/' and may be written in any case: -RegServer, -UnregServer,
// -RegServerPerUser, -UnregServerPerUser, -Version, -?. One that nobody knows is refused, lest a
// typing error starts a server that waits for clients. -Embedding and -Automation, which COM adds
// anywhere, say nothing.
CommandLine ParseCommandLine(const std::vector<std::wstring>& arguments);

}  // namespace quillon
