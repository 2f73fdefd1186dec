// The commands of the reserved property `undocumented1`: "|WORD|" and arguments separated by "|".
// docs/reference/commands.md lists them for users.
#pragma once

#include <string>

#include "core/Value.h"

namespace quillon {

class Server;
struct Environment;

// Carries out one command and returns what the property reads back: -1. A malformed command throws
// 529 and changes nothing.
Value RunReservedCommand(Server& server, Environment& environment, const std::string& text);

}  // namespace quillon
