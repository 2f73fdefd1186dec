// What the process is started for.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillon {

enum class StartMode { Serve, Register, Unregister, RegisterPerUser, UnregisterPerUser };

struct CommandLine {
  StartMode mode = StartMode::Serve;
  std::vector<std::wstring> rest;  // what is no switch of ours, in order
};

// Switches begin with '-' or '/' and may be written in any case: -RegServer, -UnregServer,
// -RegServerPerUser, -UnregServerPerUser. -Embedding and -Automation, which COM adds, say nothing.
CommandLine ParseCommandLine(const std::vector<std::wstring>& arguments);

}  // namespace quillon
