#include "administration/AuthorizeCommand.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <string_view>
#include <utility>

#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "core/Text.h"
#include "oauth/DeviceFlow.h"
#include "oauth/ProviderAnswer.h"

namespace quillon {
namespace {

using Scope = SecretProtector::Scope;

constexpr TickCount kMinute = 60'000;
constexpr std::string_view kRefreshToken = "RefreshToken";
constexpr std::string_view kPrefix = "Server ";

std::string MissingIn(const OAuthAccount& account) {
  if (!IsProviderUrl(account.deviceUrl))
    return "DeviceURL is no address that begins with https://.";
  if (!IsProviderUrl(account.tokenUrl)) return "TokenURL is no address that begins with https://.";
  if (account.clientId.empty()) return "There is no ClientId.";
  return {};
}

void ShowPrompt(Console& console, const DevicePrompt& prompt) {
  console.WriteLine("Open this address in any browser, sign in as the user whose mail it is,");
  console.WriteLine("and enter the code:");
  console.WriteLine("");
  console.WriteLine("  " + prompt.address);
  console.WriteLine("  " + prompt.code);
  console.WriteLine("");
  if (!prompt.completeAddress.empty()) {
    console.WriteLine("Or open this one, which has the code in it:");
    console.WriteLine("");
    console.WriteLine("  " + prompt.completeAddress);
    console.WriteLine("");
  }
  const auto minutes = std::max<TickCount>(prompt.goodFor / kMinute, 1);
  console.WriteLine("The code is good for " + std::to_string(minutes) +
                    (minutes == 1 ? " minute." : " minutes."));
  console.Show();
}

struct Target {
  OAuthAccount account;
  std::string name;  // as the section has it
  Scope scope = Scope::kAccount;
};

// Throws ServerError.
Target TargetOf(ServerSections& servers, const std::string& name, bool machine) {
  auto places = servers.Find(name);
  if (places.empty()) {
    throw ServerError(error_code::kInvalidValue,
                      "There is no section [Server " + name +
                          "]: quillon.exe /Configure makes one, with DeviceURL, TokenURL, ClientId "
                          "and Scope.");
  }
  auto& place = places.front();
  // The old one may be another account's, which cannot be read.
  std::erase_if(place.entries,
                [](const auto& entry) { return EqualsIgnoreCase(entry.key, kRefreshToken); });
  Target target{servers.Read(place).oauth, place.section.substr(kPrefix.size())};
  if (machine || place.file != servers.FileFor(Scope::kAccount)) target.scope = Scope::kMachine;
  // A section of the same name in the other file would hide this one, or be hidden.
  if (place.file != servers.FileFor(target.scope)) {
    throw ServerError(error_code::kInvalidValue,
                      "The section [" + place.section + "] that holds is in " + place.file +
                          ", which is not the file of the machine. Leave /Machine out.");
  }
  return target;
}

}  // namespace

bool Authorize(const std::vector<std::string>& arguments, ServerSections& servers,
               const AuthorizePorts& ports) {
  auto words = arguments;
  const bool machine =
      std::erase_if(words, [](const std::string& word) {
        return EqualsIgnoreCase(word, "/Machine") || EqualsIgnoreCase(word, "-Machine");
      }) > 0;
  try {
    if (words.size() != 1) {
      throw ServerError(error_code::kInvalidValue,
                        "It is: quillon.exe /Authorize NAME [/Machine].");
    }
    const auto target = TargetOf(servers, words.front(), machine);
    return Authorize(ports, target.account, [&](const std::string& refreshToken) {
      servers.Put(target.name, kRefreshToken, refreshToken, target.scope);
    });
  } catch (const ServerError& error) {
    ports.console.WriteLine(error.Text());
    ports.console.Show();
    return false;
  }
}

bool Authorize(const AuthorizePorts& ports, const OAuthAccount& account,
               const StoreRefreshToken& store) {
  auto failure = MissingIn(account);
  if (failure.empty()) {
    std::optional<DevicePermission> permission;
    const DeviceFlow flow(
        ports.loop, ports.https, account,
        [&ports](const DevicePrompt& prompt) { ShowPrompt(ports.console, prompt); },
        [&permission](const DevicePermission& result) { permission = result; });
    ports.loop.RunUntil([&permission] { return permission.has_value(); }, kNoDeadline);
    failure = permission ? permission->failure : "The program is being ended.";
    try {
      if (failure.empty()) store(permission->refreshToken);
    } catch (const std::exception& error) {
      failure = std::string("The refresh token could not be stored: ") + error.what();
    }
  }
  ports.console.WriteLine(failure.empty() ? "The permission has been given and is stored."
                                          : failure);
  ports.console.Show();
  return failure.empty();
}

}  // namespace quillon
