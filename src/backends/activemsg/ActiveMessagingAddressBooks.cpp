#include "backends/activemsg/ActiveMessagingAddressBooks.h"

#include <utility>

#include "backends/activemsg/ActiveMessagingNumber.h"
#include "backends/activemsg/Collections.h"
#include "backends/activemsg/MessageContent.h"
#include "backends/activemsg/MessageDraft.h"
#include "backends/activemsg/ReceivedMessage.h"
#include "backends/activemsg/StepFailure.h"
#include "core/AutomationValues.h"
#include "core/ErrorCode.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr const char* kReadingFailed = "Error reading address book (OLE AddressEntries)";
constexpr const char* kWindowFailed = "Error choosing addresses (OLE AddressBook)";
constexpr const char* kWindowTitle = "Address Book";

constexpr int kBatch = 50;

constexpr auto kNoMember = static_cast<std::int32_t>(0x80020003U);     // DISP_E_MEMBERNOTFOUND
constexpr auto kUnknownName = static_cast<std::int32_t>(0x80020006U);  // DISP_E_UNKNOWNNAME

constexpr std::int32_t kDistributionList = 1;  // display types
constexpr std::int32_t kPrivateDistributionList = 5;

constexpr std::int32_t kTo = 1;  // types of recipients
constexpr std::int32_t kCc = 2;
constexpr std::int32_t kBcc = 3;

// Runs a call that libraries before 1.1 do not know.
template <typename Step>
decltype(auto) InNewerLibrary(Step&& step) {
  try {
    return std::forward<Step>(step)();
  } catch (const AutomationError& error) {
    if (error.Number() != kUnknownName && error.Number() != kNoMember) throw;
    throw ServerError(error_code::kAddressBookFunction);
  }
}

// "SMTP:joe@example.com", as a recipient wants it.
std::string TypedAddress(const std::string& type, const std::string& address) {
  const auto prefix = type + ":";
  if (type.empty() || address.empty() ||
      EqualsIgnoreCase(std::string_view(address).substr(0, prefix.size()), prefix)) {
    return address;
  }
  return prefix + address;
}

AddressEntry EntryOf(AutomationObject& entry) {
  const auto type = NumberOf(OptionalProperty(entry, "DisplayType"));
  return {TextOf(OptionalProperty(entry, "Name")),
          TypedAddress(TextOf(OptionalProperty(entry, "Type")),
                       TextOf(OptionalProperty(entry, "Address"))),
          type == kDistributionList || type == kPrivateDistributionList};
}

// Walked with a collection of its own, which knows how far it is.
class OpenList final : public OpenAddressBook {
 public:
  OpenList(const ActiveMessagingSession& session, const Diagnostic& diagnostic,
           AutomationObjectPtr entries)
      : session_(session),
        diagnostic_(diagnostic),
        entries_(std::move(entries)),
        sessionsBefore_(session.Ended()) {}

  MailResult Fetch(MailRequest& request, std::vector<AddressEntry>& entries, bool& more) override {
    if (HasEnded()) throw ServerError(error_code::kAddressBookClosed);
    return RunOperation(diagnostic_, request, kReadingFailed, [&] {
      for (int taken = 0; taken < kBatch; ++taken) {
        if (entry_ == nullptr) entry_ = ObjectOf(entries_->Call(begun_ ? "GetNext" : "GetFirst"));
        begun_ = true;
        more = entry_ != nullptr;
        if (!more) return;
        entries.push_back(EntryOf(*entry_));
        entry_ = nullptr;
      }
    });
  }

  bool HasEnded() const override { return session_.Ended() != sessionsBefore_; }

 private:
  const ActiveMessagingSession& session_;
  const Diagnostic& diagnostic_;
  const AutomationObjectPtr entries_;
  const std::uint64_t sessionsBefore_;
  bool begun_ = false;
  AutomationObjectPtr entry_;  // one that could not be read yet
};

void AddRecipientsOf(AutomationObject& recipients, const std::vector<AddressEntry>& entries,
                     std::int32_t type) {
  for (const auto& entry : entries) {
    const auto recipient = RequireObject(
        recipients.Call("Add", Arguments({AutomationMissing(), AutomationMissing(), type})));
    recipient->Put("Name", entry.name);
    if (!entry.address.empty()) recipient->Put("Address", entry.address);
  }
}

AddressChoice ChoiceOf(AutomationObject& recipients) {
  AddressChoice choice;
  ForEachItem(recipients, [&](const AutomationObjectPtr& recipient) {
    const auto type = NumberOf(recipient->Get("Type"));
    auto& list = type == kCc ? choice.cc : type == kBcc ? choice.bcc : choice.to;
    list.push_back({TextOf(OptionalProperty(*recipient, "Name")),
                    TextOf(OptionalProperty(*recipient, "Address")), false});
    return true;
  });
  return choice;
}

}  // namespace

AutomationObjectPtr ActiveMessagingAddressBooks::Lists(MailRequest& request) {
  const auto session = session_.LoggedOn(request);
  return InNewerLibrary([&] { return RequireObject(session->Get("AddressLists")); });
}

MailResult ActiveMessagingAddressBooks::Names(MailRequest& request,
                                              std::vector<std::string>& names) {
  return RunOperation(diagnostic_, request, kReadingFailed, [&] {
    ForEachItem(*Lists(request), [&](const AutomationObjectPtr& list) {
      names.push_back(TextOf(list->Get("Name")));
      return true;
    });
  });
}

MailResult ActiveMessagingAddressBooks::Open(MailRequest& request, const std::string& name,
                                             std::unique_ptr<OpenAddressBook>& book) {
  return RunOperation(diagnostic_, request, kReadingFailed, [&] {
    AutomationObjectPtr found;
    ForEachItem(*Lists(request), [&](const AutomationObjectPtr& list) {
      if (name.empty() || TextOf(list->Get("Name")) == name) found = list;
      return found == nullptr;
    });
    if (found == nullptr) throw NoSuchAddressBook();
    book = std::make_unique<OpenList>(session_, diagnostic_,
                                      RequireObject(found->Get("AddressEntries")));
  });
}

AddressChoice ActiveMessagingAddressBooks::AskUser(MailRequest& request,
                                                   const AddressChoice& before) {
  const auto session = session_.LoggedOn(request);
  // Recipients belong to a message, so there is one for the moment.
  const auto outbox = RequireObject(session->Get("Outbox"));
  const MessageDraft draft(*RequireObject(outbox->Get("Messages")));
  const auto recipients = RequireObject(draft->Get("Recipients"));
  AddRecipientsOf(*recipients, before.to, kTo);
  AddRecipientsOf(*recipients, before.cc, kCc);
  AddRecipientsOf(*recipients, before.bcc, kBcc);
  const auto chosen = InNewerLibrary([&] {
    return session->Call("AddressBook", {{"Recipients", recipients},
                                         {"Title", kWindowTitle},
                                         {"RecipLists", std::int32_t{3}},
                                         {"ParentWindow", request.shared.ownerWindow}});
  });
  return ChoiceOf(*RequireObject(chosen));
}

MailResult ActiveMessagingAddressBooks::Show(MailRequest& request, AddressChoice& choice) {
  return RunOperation(diagnostic_, request, kWindowFailed, [&] {
    try {
      choice = AskUser(request, choice);
    } catch (const AutomationError& error) {
      if (ActiveMessagingNumber(error.Number()) != active_messaging::kUserAbort) throw;
      throw ServerError(error_code::kUserAborted, "User selected cancel in dialog.");
    }
  });
}

}  // namespace quillon
