// The command that sets keys of a section "Server NAME", and shows one.
#pragma once

#include <string>
#include <vector>

#include "administration/Console.h"
#include "internet/ServerSections.h"

namespace quillon {

// The arguments are NAME [KEY [VALUE]] [/Machine]. Says on the console what came of it, without any
// secret, and returns whether all is well.
bool Configure(const std::vector<std::string>& arguments, ServerSections& servers,
               Console& console);

}  // namespace quillon
