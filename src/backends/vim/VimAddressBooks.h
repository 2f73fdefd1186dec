// The address books of VIM. One that is open is good as long as the Server keeps the session in
// which it was opened; VIM has no window to choose from.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "backends/Diagnostic.h"
#include "backends/vim/VimSessions.h"
#include "mail/AddressBooks.h"

namespace quillon {

class VimAddressBooks final : public AddressBooks {
 public:
  // All three outlive this object and every open book.
  VimAddressBooks(Vim& library, VimSessions& sessions, const Diagnostic& diagnostic)
      : library_(library), sessions_(sessions), diagnostic_(diagnostic) {}

  MailResult Names(MailRequest& request, std::vector<std::string>& names) override;
  MailResult Open(MailRequest& request, const std::string& name,
                  std::unique_ptr<OpenAddressBook>& book) override;

 private:
  std::unique_ptr<OpenAddressBook> OpenNamed(const MailRequest& request, const std::string& name);

  Vim& library_;
  VimSessions& sessions_;
  const Diagnostic& diagnostic_;
};

}  // namespace quillon
