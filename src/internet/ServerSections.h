// The sections "Server NAME" of the configuration files, where NAME is a host as scripts write it,
// in any case, or "*" for all others.
//
// The user's own file goes before that of the machine, and a section of the name before "*", in
// whichever file. One section is taken, as a whole.
//
// A value or key that cannot be understood is thrown as ServerError 529, with a text that names
// file, section and key: what somebody has written to secure a connection is never passed over.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "internet/ServerSection.h"
#include "mail/INIUtilities.h"
#include "ports/SecretProtector.h"

namespace quillon {

class ServerSections {
 public:
  using Scope = SecretProtector::Scope;

  // Where a section stands, as it is written there.
  struct Place {
    std::string file;
    std::string section;  // with "Server " in front
    std::vector<clsINIUtilities::Entry> entries;
  };

  // `machine` is null where there is no file of the machine.
  ServerSections(clsINIUtilities& own, clsINIUtilities* machine, SecretProtector& protector)
      : own_(own), machine_(machine), protector_(protector) {}

  // What holds for a host; without one, what "*" says.
  ServerSection For(std::string_view host);
  ServerSection Read(const Place& place);

  // The section that holds for the host is the first; behind it, what it hides.
  std::vector<Place> Find(std::string_view host);

  // Where Put writes; empty: nowhere.
  std::string FileFor(Scope scope) const;

  // Writes a key: for this account into its own file, for the machine into that of the machine. A
  // secret is encrypted for the one or the other. An empty value takes the key out. Returns the
  // path of the file; thrown beside 529: 75 when the file cannot be written.
  std::string Put(std::string_view name, std::string_view key, const std::string& value,
                  Scope scope);

  // A refresh token that the provider has replaced, wherever the account stands.
  void ReplaceRefreshToken(const OAuthAccount& account, const std::string& refreshToken);

  // For whom a secret is encrypted, as it is written; none for one in clear.
  static std::optional<Scope> ScopeOf(std::string_view written);

 private:
  std::vector<clsINIUtilities*> Files() const;
  bool Write(clsINIUtilities& file, std::string_view section, const ServerKey& key,
             const std::string& value, Scope scope);
  std::string Reveal(const Place& place, const ServerKey& key, const std::string& written);

  clsINIUtilities& own_;
  clsINIUtilities* machine_;
  SecretProtector& protector_;
};

}  // namespace quillon
