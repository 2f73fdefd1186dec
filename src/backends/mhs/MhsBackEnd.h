// The back end of MHS.
//
// Failures are returned by the numbers of MhsErrorText.h. Thrown as ServerError: 522 (cancelled
// login dialog), 530 (folders, and all else that a directory of mail does not have), 532 (headers
// of another mail system or account), 534 (the files of a message could not be packed), 544 (no
// name or no mail directory), 546 (a mail directory that does not exist).
//
// Nothing is kept between two calls but the headers: directories may change at any time, and other
// programs work in them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "backends/Diagnostic.h"
#include "backends/mhs/MhsAccount.h"
#include "backends/mhs/MhsAddressBooks.h"
#include "codec/CodePage437.h"
#include "mail/BackEnd.h"
#include "ports/FileSystem.h"
#include "ports/LocalClock.h"
#include "ports/LoginPrompt.h"
#include "ports/MessageBox.h"

namespace quillon {

struct MhsPorts {
  MhsAccounts& accounts;
  FileSystem& files;
  const LocalClock& clock;
  MessageBoxPort& messageBox;
  LoginPrompt& loginPrompt;
};

class MhsBackEnd final : public BackEnd {
 public:
  explicit MhsBackEnd(const MhsPorts& ports);

  MailResult Login(MailRequest& request) override;
  MailResult Logout(MailRequest& request) override;
  MailResult Send(MailRequest& request) override;
  MailResult LoadMessageHeaders(MailRequest& request) override;
  MailResult LoadMessage(MailRequest& request) override;
  MailResult DeleteMessage(MailRequest& request) override;
  MailResult UnreadCount(MailRequest& request, std::int32_t& count) override;
  AddressBooks* Books() override { return &books_; }

 private:
  MailResult Run(MailRequest& request, const std::function<void(const MhsAccount&)>& operation);

  MhsPorts ports_;
  Diagnostic diagnostic_;
  CodePage437 codePage_;
  MhsAddressBooks books_;
};

}  // namespace quillon
