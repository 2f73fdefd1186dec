// The back end of Simple MAPI, of the systems that are reached through it, and of Active Messaging
// where its library is missing.
//
// Failures are returned by the library's number. Thrown as ServerError: 522 (cancelled login
// dialog), 530 (folders, which Simple MAPI does not have), 532 (headers of another mail system),
// 534 (the files of a message could not be packed), 544 (there is nobody to ask for login data).
#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "backends/Diagnostic.h"
#include "backends/mapi/MapiAddressBooks.h"
#include "mail/BackEnd.h"
#include "mail/INIUtilities.h"
#include "ports/FileSystem.h"
#include "ports/LoginPrompt.h"
#include "ports/MessageBox.h"
#include "ports/SimpleMapi.h"

namespace quillon {

struct MapiPorts {
  SimpleMapi& library;
  FileSystem& files;
  MessageBoxPort& messageBox;
  LoginPrompt& loginPrompt;
  clsINIUtilities& configuration;  // section "MAPI"
};

class MapiBackEnd final : public BackEnd {
 public:
  explicit MapiBackEnd(const MapiPorts& ports);

  MailResult Login(MailRequest& request) override;
  MailResult Logout(MailRequest& request) override;
  MailResult Send(MailRequest& request) override;
  MailResult LoadMessageHeaders(MailRequest& request) override;
  MailResult LoadMessage(MailRequest& request) override;
  MailResult DeleteMessage(MailRequest& request) override;
  MailResult MoveCopyMessage(MailRequest& request, const std::string& folder, bool copy) override;
  MailResult UnreadCount(MailRequest& request, std::int32_t& count) override;
  MailResult ResolveName(MailRequest& request, const std::string& name, bool withAddress,
                         std::string& resolved) override;
  MailResult SetSessionHandle(MailRequest& request, std::int32_t handle) override;
  std::optional<std::int32_t> NumberOfCancelledDialog() const override;
  AddressBooks* Books() override { return &books_; }
  void Shutdown(std::int32_t savedHandle) override;

 private:
  // What a list of headers asks for, and where it goes.
  struct Listing {
    HeaderTable& table;
    std::string messageType;
    bool unreadOnly = false;
    std::int32_t most = 0;  // so many are enough
  };

  MailResult LoginOnDemand(MailRequest& request);
  MailResult SendMessage(MailRequest& request);
  MailResult AddRecipients(const MailRequest& request, const std::vector<std::string>& list,
                           std::uint32_t recipientClass, MapiMessage& message);
  MailResult List(const MailRequest& request, const Listing& wanted);
  MailResult AddHeader(const MailRequest& request, const Listing& wanted, const std::string& id);
  MailResult Fail(const MailRequest& request, const char* context, std::uint32_t number) const;

  MapiPorts ports_;
  Diagnostic diagnostic_;
  MapiAddressBooks books_;
  std::set<std::uint32_t> open_;  // sessions that were begun here
};

}  // namespace quillon
