// The back end of VINES, or of whatever mail system the provider library stands for.
//
// Failures are returned by the library's number. Thrown as ServerError: 522 (cancelled login
// dialog), 530 (copies, and folders as such), 532 (headers of another mail system), 533 (no such
// header), 534 (the files of a message could not be packed), 544 (there is nobody to ask for login
// data).
#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "backends/Diagnostic.h"
#include "backends/vines/VinesAddressBooks.h"
#include "backends/vines/VinesLibrary.h"
#include "mail/BackEnd.h"
#include "ports/FileSystem.h"
#include "ports/LoginPrompt.h"
#include "ports/MessageBox.h"

namespace quillon {

struct VinesPorts {
  VinesLibrary& library;
  FileSystem& files;
  MessageBoxPort& messageBox;
  LoginPrompt& loginPrompt;
};

class VinesBackEnd final : public BackEnd {
 public:
  explicit VinesBackEnd(const VinesPorts& ports);

  MailResult Login(MailRequest& request) override;
  MailResult Logout(MailRequest& request) override;
  MailResult Send(MailRequest& request) override;
  MailResult LoadMessageHeaders(MailRequest& request) override;
  MailResult LoadMessage(MailRequest& request) override;
  MailResult DeleteMessage(MailRequest& request) override;
  MailResult MoveCopyMessage(MailRequest& request, const std::string& folder, bool copy) override;
  MailResult UnreadCount(MailRequest& request, std::int32_t& count) override;
  MailResult GetSessionHandle(MailRequest& request, std::int32_t& handle) override;
  MailResult SetSessionHandle(MailRequest& request, std::int32_t handle) override;
  AddressBooks* Books() override;
  void Shutdown(std::int32_t savedHandle) override;

 private:
  MailResult LoginOnDemand(MailRequest& request);
  MailResult List(const MailRequest& request, HeaderTable& table);
  // The result of a call that has ended with `number`.
  MailResult ResultOf(const MailRequest& request, const char* context, std::int32_t number) const;

  VinesPorts ports_;
  MailProvider& provider_;
  Diagnostic diagnostic_;
  VinesAddressBooks books_;
  std::set<std::int32_t> open_;  // sessions that were begun here
};

}  // namespace quillon
