// The command that tries the servers of a section as scripts would use them, and says step by step
// what it finds and what to do about it. It logs in, and sends and reads nothing.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "administration/Console.h"
#include "internet/ServerSections.h"
#include "internet/smtppop.h"

namespace quillon {

struct CheckPorts {
  EventLoop& loop;
  Network& network;
  SecurityPorts security;
  ComposerPorts composing;
  Console& console;
};

// What is not set is not tried.
struct CheckRequest {
  std::optional<SmtpSettings> smtp;
  std::optional<PopSettings> pop;
};

// Returns whether all is well.
bool CheckServers(const CheckPorts& ports, const CheckRequest& request);

// The same for the section of the server that the one argument names.
bool Check(const std::vector<std::string>& arguments, ServerSections& servers,
           const CheckPorts& ports);

}  // namespace quillon
