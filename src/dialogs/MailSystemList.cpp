#include "dialogs/MailSystemList.h"

#include <algorithm>
#include <array>

namespace quillon {

namespace {

struct Offered {
  MailSystemId system;
  const char* name;
  const char* reason;  // when it is not present
};

// Other identifiers of their families work with the same program.
constexpr std::array kOffered{
    Offered{mail_system::kInternet, "Internet mail (SMTP and POP3)", ""},
    Offered{mail_system::kSimpleMapi, "Simple MAPI", "The library mapi32.dll is not installed."},
    Offered{mail_system::kActiveMessaging, "Active Messaging",
            "The library olemsg32.dll is not installed."},
    Offered{mail_system::kVim, "VIM", "The library vim32.dll is not installed."},
    Offered{mail_system::kNotes, "Notes", "The Notes client is not installed."},
    Offered{mail_system::kMhs, "MHS", "No mail directory is set up."},
    Offered{mail_system::kVines, "VINES", "No provider library is set up."},
};

}  // namespace

MailSystemList::MailSystemList(const std::function<bool(MailSystemId)>& isPresent) {
  std::vector<Offered> missing;
  missing.reserve(kOffered.size());
  const auto add = [this](const Offered& offered, const char* reason) {
    systems_.push_back(offered.system);
    choices_.push_back({offered.name, reason});
  };
  for (const auto& offered : kOffered) {
    if (isPresent(offered.system)) {
      add(offered, "");
    } else {
      missing.push_back(offered);
    }
  }
  for (const auto& offered : missing) add(offered, offered.reason);
}

std::size_t MailSystemList::PlaceOf(MailSystemId system) const {
  const auto found = std::find_if(systems_.begin(), systems_.end(), [system](MailSystemId one) {
    return FamilyOf(one) == FamilyOf(system);
  });
  return found != systems_.end() ? static_cast<std::size_t>(found - systems_.begin()) : 0;
}

MailSystemId MailSystemList::Taken(std::size_t place, MailSystemId current) const {
  const auto system = systems_.at(place);
  return FamilyOf(system) == FamilyOf(current) ? current : system;
}

}  // namespace quillon
