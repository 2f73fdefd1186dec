// The address book of Simple MAPI. The interface shows it in a window and cannot list it: what a
// book consists of is what the user has chosen there. Before, there is nothing to walk (754), so
// that a script that nobody watches never waits for a window.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "backends/Diagnostic.h"
#include "mail/AddressBooks.h"
#include "ports/SimpleMapi.h"

namespace quillon {

class MapiAddressBooks final : public AddressBooks {
 public:
  using LogOn = std::function<MailResult(MailRequest& request)>;

  MapiAddressBooks(SimpleMapi& library, const Diagnostic& diagnostic, LogOn logOn)
      : library_(library), diagnostic_(diagnostic), logOn_(std::move(logOn)) {}

  MailResult Names(MailRequest& request, std::vector<std::string>& names) override;
  MailResult Open(MailRequest& request, const std::string& name,
                  std::unique_ptr<OpenAddressBook>& book) override;
  bool HasWindow() const override { return true; }
  MailResult Show(MailRequest& request, AddressChoice& choice) override;

 private:
  SimpleMapi& library_;
  const Diagnostic& diagnostic_;
  const LogOn logOn_;
};

}  // namespace quillon
