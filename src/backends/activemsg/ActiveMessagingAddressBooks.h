// The address lists of Active Messaging, and its window to choose from them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "backends/Diagnostic.h"
#include "backends/activemsg/ActiveMessagingSession.h"
#include "mail/AddressBooks.h"

namespace quillon {

class ActiveMessagingAddressBooks final : public AddressBooks {
 public:
  ActiveMessagingAddressBooks(ActiveMessagingSession& session, const Diagnostic& diagnostic)
      : session_(session), diagnostic_(diagnostic) {}

  MailResult Names(MailRequest& request, std::vector<std::string>& names) override;
  MailResult Open(MailRequest& request, const std::string& name,
                  std::unique_ptr<OpenAddressBook>& book) override;
  bool HasWindow() const override { return true; }
  MailResult Show(MailRequest& request, AddressChoice& choice) override;

 private:
  AutomationObjectPtr Lists(MailRequest& request);
  AddressChoice AskUser(MailRequest& request, const AddressChoice& before);

  ActiveMessagingSession& session_;
  const Diagnostic& diagnostic_;
};

}  // namespace quillon
