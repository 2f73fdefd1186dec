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
  Configure,
  Authorize,
  Check,
  Refuse,
};

struct CommandLine {
  StartMode mode = StartMode::Serve;
  std::wstring unknown;                 // what is refused
  std::vector<std::wstring> arguments;  // of Configure, Authorize and Check
  bool bare = false;                    // nothing at all was said: COM always says something
  std::wstring rest;                    // as it stands from the first word on that is no switch
};

// Of the process's whole command line, which begins with the name of the program.
//
// Switches begin with '-' or '/' and may be written in any case: -RegServer, -UnregServer,
// -RegServerPerUser, -UnregServerPerUser, -Version, -?, and -Configure, -Authorize and -Check,
// which take all that follows as their arguments. One that nobody knows is refused, lest a typing
// error starts a server that waits for clients. -Embedding and -Automation, which COM adds in front
// or behind, say nothing.
CommandLine ParseCommandLine(std::wstring_view text);

}  // namespace quillon
