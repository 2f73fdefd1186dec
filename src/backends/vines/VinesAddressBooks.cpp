#include "backends/vines/VinesAddressBooks.h"

#include <algorithm>

#include "backends/vines/VinesMessage.h"
#include "core/ErrorCode.h"
#include "core/ServerError.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::uint32_t kEntriesAtOnce = 50;
// A library that always finds more is left.
constexpr std::uint32_t kMostEntries = 1U << 20U;

// Throws ServerError 754 for what the library has not.
std::int32_t Supported(std::int32_t number) {
  if (number == provider::kNotSupported) throw ServerError(error_code::kAddressBookFunction);
  return number;
}

class VinesOpenBook final : public OpenAddressBook {
 public:
  VinesOpenBook(MailProvider& provider, const VinesAddressBooks::Frame& frame, std::string name,
                std::int32_t session)
      : provider_(provider), frame_(frame), name_(std::move(name)), session_(session) {}

  MailResult Fetch(MailRequest& request, std::vector<AddressEntry>& entries, bool& more) override {
    const auto& session = request.instance.session;
    if (!session.loggedIn || session.handle != session_) {
      throw ServerError(error_code::kAddressBookClosed);
    }
    std::vector<ProviderEntry> found;
    auto result = frame_(request, "Error reading address book (Entries)", [&] {
      return Supported(
          provider_.Entries(VinesCallOf(request), {name_, count_, kEntriesAtOnce}, found));
    });
    if (!result.Succeeded()) return result;
    count_ += static_cast<std::uint32_t>(found.size());
    more = !found.empty() && count_ < kMostEntries;
    entries.reserve(entries.size() + found.size());
    for (auto& entry : found) {
      entries.push_back({std::move(entry.name), std::move(entry.address), entry.isGroup});
    }
    return result;
  }

 private:
  MailProvider& provider_;
  const VinesAddressBooks::Frame& frame_;
  std::string name_;
  std::int32_t session_;
  std::uint32_t count_ = 0;  // of entries that have come
};

void AddParties(std::vector<ProviderParty>& parties, std::int32_t kind,
                const std::vector<AddressEntry>& entries) {
  parties.reserve(parties.size() + entries.size());
  for (const auto& entry : entries) parties.push_back({kind, entry.name, entry.address});
}

// False when one is of no kind that there is.
bool TakeParties(std::vector<ProviderParty>& parties, AddressChoice& choice) {
  for (auto& party : parties) {
    const bool isKnown = party.kind >= provider::kTo && party.kind <= provider::kBcc;
    if (!isKnown) return false;
    auto& list = party.kind == provider::kTo   ? choice.to
                 : party.kind == provider::kCc ? choice.cc
                                               : choice.bcc;
    list.push_back({std::move(party.name), std::move(party.address), false});
  }
  return true;
}

}  // namespace

MailResult VinesAddressBooks::Names(MailRequest& request, std::vector<std::string>& names) {
  return frame_(request, "Error listing address books (Books)",
                [&] { return Supported(provider_.Books(VinesCallOf(request), names)); });
}

MailResult VinesAddressBooks::Open(MailRequest& request, const std::string& name,
                                   std::unique_ptr<OpenAddressBook>& book) {
  return frame_(request, "Error opening address book (Books)", [&] {
    std::vector<std::string> names;
    const auto number = Supported(provider_.Books(VinesCallOf(request), names));
    if (number != provider::kSuccess) return number;
    const auto found = std::find_if(names.begin(), names.end(), [&](const auto& each) {
      return name.empty() || EqualsIgnoreCase(each, name);
    });
    if (found == names.end()) {
      throw NoSuchAddressBook();
    }
    book =
        std::make_unique<VinesOpenBook>(provider_, frame_, *found, request.instance.session.handle);
    return provider::kSuccess;
  });
}

MailResult VinesAddressBooks::Show(MailRequest& request, AddressChoice& choice) {
  if (!HasWindow()) throw ServerError(error_code::kAddressBookFunction);
  std::vector<ProviderParty> parties;
  AddParties(parties, provider::kTo, choice.to);
  AddParties(parties, provider::kCc, choice.cc);
  AddParties(parties, provider::kBcc, choice.bcc);
  return frame_(request, "Error choosing addresses (ChooseAddresses)", [&] {
    const auto number = Supported(provider_.ChooseAddresses(VinesCallOf(request), parties));
    if (number == provider::kCancelled) {
      throw ServerError(error_code::kUserAborted, "User selected cancel in dialog.");
    }
    AddressChoice chosen;
    if (number == provider::kSuccess && !TakeParties(parties, chosen)) return provider::kBadData;
    if (number == provider::kSuccess) choice = std::move(chosen);
    return number;
  });
}

}  // namespace quillon
