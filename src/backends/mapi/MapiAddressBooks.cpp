#include "backends/mapi/MapiAddressBooks.h"

#include <array>
#include <utility>

#include "core/ErrorCode.h"
#include "core/ServerError.h"

namespace quillon {

namespace {

constexpr const char* kBookName = "Address Book";

struct ListOfClass {
  std::vector<AddressEntry> AddressChoice::*entries;
  std::uint32_t recipientClass;
};

constexpr std::array kLists{
    ListOfClass{&AddressChoice::to, mapi::kTo},
    ListOfClass{&AddressChoice::cc, mapi::kCc},
    ListOfClass{&AddressChoice::bcc, mapi::kBcc},
};

class ChosenBook final : public OpenAddressBook {
 public:
  MailResult Fetch(MailRequest&, std::vector<AddressEntry>& entries, bool& more) override {
    if (!isChosen_) throw ServerError(error_code::kAddressBookFunction);
    entries.insert(entries.end(), chosen_.begin(), chosen_.end());
    more = false;
    return {};
  }
  bool TakeChoice(const AddressChoice& choice) override {
    chosen_.clear();
    for (const auto& list : kLists) {
      const auto& entries = choice.*list.entries;
      chosen_.insert(chosen_.end(), entries.begin(), entries.end());
    }
    isChosen_ = true;
    return true;
  }

 private:
  std::vector<AddressEntry> chosen_;
  bool isChosen_ = false;
};

std::vector<MapiRecipient> RecipientsOf(const AddressChoice& choice) {
  std::vector<MapiRecipient> recipients;
  for (const auto& list : kLists) {
    for (const auto& entry : choice.*list.entries) {
      recipients.push_back({list.recipientClass, entry.name, entry.address, {}});
    }
  }
  return recipients;
}

// A recipient of a class that a message has no list for is one like most.
AddressChoice ChoiceOf(std::vector<MapiRecipient> recipients) {
  AddressChoice choice;
  for (auto& recipient : recipients) {
    const bool isCc = recipient.recipientClass == mapi::kCc;
    const bool isBcc = recipient.recipientClass == mapi::kBcc;
    auto& list = isCc ? choice.cc : isBcc ? choice.bcc : choice.to;
    list.push_back({std::move(recipient.name), std::move(recipient.address), false});
  }
  return choice;
}

}  // namespace

MailResult MapiAddressBooks::Names(MailRequest&, std::vector<std::string>& names) {
  names = {kBookName};
  return {};
}

MailResult MapiAddressBooks::Open(MailRequest& request, const std::string&,
                                  std::unique_ptr<OpenAddressBook>& book) {
  auto result = logOn_(request);
  if (result.Succeeded()) book = std::make_unique<ChosenBook>();
  return result;
}

MailResult MapiAddressBooks::Show(MailRequest& request, AddressChoice& choice) {
  auto result = logOn_(request);
  if (!result.Succeeded()) return result;
  auto recipients = RecipientsOf(choice);
  const auto shown = library_.Address(static_cast<std::uint32_t>(request.instance.session.handle),
                                      static_cast<std::uint32_t>(request.shared.ownerWindow),
                                      kBookName, recipients);
  if (shown == mapi::kUserAbort) {
    throw ServerError(error_code::kUserAborted, "User selected cancel in dialog.");
  }
  if (shown == mapi::kNotSupported) throw ServerError(error_code::kAddressBookFunction);
  if (shown != mapi::kSuccess) {
    return diagnostic_.Fail(request, "Error choosing addresses (MAPIAddress)",
                            static_cast<std::int32_t>(shown));
  }
  choice = ChoiceOf(std::move(recipients));
  return {};
}

}  // namespace quillon
