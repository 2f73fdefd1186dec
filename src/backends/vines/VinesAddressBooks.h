// The address books of the provider library. One that is open is good as long as the Server keeps
// the session, under the number, in which it was opened.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "mail/AddressBooks.h"
#include "ports/MailProvider.h"

namespace quillon {

class VinesAddressBooks final : public AddressBooks {
 public:
  // Runs a call in a session, which it begins when there is none; `context` is what the box says of
  // a failure.
  using Frame = std::function<MailResult(MailRequest& request, const char* context,
                                         const std::function<std::int32_t()>& call)>;

  // The provider and what the frame holds outlive this object and every open book.
  VinesAddressBooks(MailProvider& provider, Frame frame)
      : provider_(provider), frame_(std::move(frame)) {}

  MailResult Names(MailRequest& request, std::vector<std::string>& names) override;
  MailResult Open(MailRequest& request, const std::string& name,
                  std::unique_ptr<OpenAddressBook>& book) override;
  bool HasWindow() const override { return provider_.HasAddressWindow(); }
  MailResult Show(MailRequest& request, AddressChoice& choice) override;

 private:
  MailProvider& provider_;
  Frame frame_;
};

}  // namespace quillon
