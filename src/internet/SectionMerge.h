// What a script, the configuration file and the script's newer members say of a server, as one.
//
// The section goes before what the script says of server, port, login name and password; what the
// script says by the newer members goes before the section.
#pragma once

#include <string>
#include <vector>

#include "internet/PopSession.h"
#include "internet/ServerSection.h"
#include "internet/SmtpSession.h"
#include "mail/InstanceState.h"
#include "ports/CodePage.h"

namespace quillon {

// The settings hold what the script says. With an empty section and nothing in `access` they stay
// as they are.
void Apply(const ServerSection& section, const InternetAccess& access, const CodePage& codePage,
           SmtpSettings& settings);
void Apply(const ServerSection& section, const InternetAccess& access, const CodePage& codePage,
           PopSettings& settings);

// The methods of logging in that may be used, in order; empty: any.
std::vector<std::string> WantedLogins(const ServerSection& section, const InternetAccess& access);
// How messages leave.
struct MessageForm {
  std::string charset;  // empty: as the contract has it
  bool replaces = false;
  bool modern = false;
};

MessageForm FormOf(const ServerSection& section, const InternetAccess& access);

}  // namespace quillon
