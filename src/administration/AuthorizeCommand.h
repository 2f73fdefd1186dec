// The command that asks a provider of accounts for its permission, once, with an administrator who
// signs in with any browser.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "administration/Console.h"
#include "internet/ServerSections.h"
#include "oauth/AccessTokens.h"
#include "ports/EventLoop.h"
#include "ports/HttpsClient.h"

namespace quillon {

struct AuthorizePorts {
  EventLoop& loop;
  HttpsClient& https;
  Console& console;
};

// The arguments are NAME [/Machine]. The refresh token is stored in the section that holds for the
// server, encrypted for this account, or for the machine where the file is that of the machine
// alone or the switch says so. Returns whether the permission has been given and stored, and says
// on the console what came of it, without secrets.
bool Authorize(const std::vector<std::string>& arguments, ServerSections& servers,
               const AuthorizePorts& ports);

// Keeps the refresh token; what it throws is the failure of the command.
using StoreRefreshToken = std::function<void(const std::string& refreshToken)>;

// The same for an account. Waits for the user, an hour at the most.
bool Authorize(const AuthorizePorts& ports, const OAuthAccount& account,
               const StoreRefreshToken& store);

}  // namespace quillon
