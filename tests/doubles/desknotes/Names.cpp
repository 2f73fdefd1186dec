#include "desknotes/Names.h"

#include <algorithm>

#include "core/Text.h"
#include "desknotes/NotesObject.h"

namespace desk {
namespace {

constexpr std::string_view kCommon = "CN=";
constexpr std::string_view kType = "SMTP:";

}  // namespace

std::string CanonicalName(const std::string& commonName) {
  return std::string(kCommon) + commonName + "/O=Desk";
}

std::string AbbreviatedName(const std::string& commonName) {
  return commonName + "/Desk";
}

std::string CommonName(const std::string& name) {
  const bool prefixed = quillon::EqualsIgnoreCase(name.substr(0, kCommon.size()), kCommon);
  const std::string bare = prefixed ? name.substr(kCommon.size()) : name;
  return bare.substr(0, bare.find('/'));
}

std::string BareAddress(const std::string& address) {
  return address.starts_with(kType) ? address.substr(kType.size()) : address;
}

bool IsAccount(const std::string& address) {
  const std::vector<Account> accounts = TheStore().Accounts();
  return std::ranges::any_of(accounts, [&](const Account& account) {
    return quillon::EqualsIgnoreCase(BareAddress(account.address), BareAddress(address));
  });
}

std::string NotesNameOf(const std::string& name, const std::string& address) {
  if (IsAccount(address)) return CanonicalName(name);
  const std::string bare = BareAddress(address);
  if (name.empty() || bare.empty() || name == bare) return name.empty() ? bare : name;
  return name + " <" + bare + ">";
}

Recipient RecipientOf(const std::string& text, int recipientClass) {
  const std::size_t open = text.find('<');
  if (open != std::string::npos && text.ends_with(">")) {
    return {recipientClass, quillon::TrimmedCopy(text.substr(0, open)),
            "SMTP:" + text.substr(open + 1, text.size() - open - 2)};
  }
  const std::vector<Entry> entries = TheStore().Resolve(CommonName(text));
  if (entries.empty()) throw MemberError(NotesError::kNoSuchName);
  if (entries.size() > 1) throw MemberError(NotesError::kManyNames);
  return {recipientClass, entries[0].name, entries[0].address};
}

}  // namespace desk
