// The back end of VIM.
//
// A call of VIM that fails ends the operation with its whole status as the number and the text of
// the step, or the text of the status for a step that has none; before that comes the box "VIM Mail
// Error". The session stays open. Thrown as ServerError: 522 (cancelled login dialog), 530 (copying
// a message, folders), 532 and 533 (no such header), 534 (files that cannot be packed), 544 (login
// data that nobody can be asked for), 546 (no such post office), 551 (a post without subject and
// text).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "backends/Diagnostic.h"
#include "backends/vim/VimAddressBooks.h"
#include "backends/vim/VimHeader.h"
#include "backends/vim/VimMessage.h"
#include "backends/vim/VimPorts.h"
#include "backends/vim/VimSessions.h"
#include "mail/BackEnd.h"
#include "mail/ReceivedFiles.h"

namespace quillon {

class VimBackEnd final : public BackEnd {
 public:
  explicit VimBackEnd(const VimPorts& ports);

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
  MailResult Post(MailRequest& request) override;
  MailResult SetSessionHandle(MailRequest& request, std::int32_t handle) override;
  AddressBooks* Books() override { return &books_; }
  void Shutdown(std::int32_t savedHandle) override;

 private:
  // The message of the header at messageIndex, and the container that it is in.
  struct Current {
    vim::Handle container = 0;
    VimReference reference;
    VimFolder folder;
  };

  MailResult Run(const MailRequest& request, const std::function<void()>& operation) const;

  void SendMessage(MailRequest& request);
  std::vector<VimEnvelope> List(vim::Handle container, const VimFolder& folder, bool unreadOnly,
                                std::size_t most) const;
  void ReadHeaders(const MailRequest& request, vim::Handle container);
  HeaderRecord ReadHeader(vim::Handle container, const VimEnvelope& envelope,
                          const std::string& dateFormat) const;
  VimMessage OpenMessage(vim::Handle container, VimReference reference, const char* step) const;
  Current CurrentMessage(const MailRequest& request);
  void WriteAttachments(const VimMessage& message, ReceivedFiles& files) const;

  VimPorts ports_;
  Diagnostic diagnostic_;
  VimSessions sessions_;
  VimAddressBooks books_;
};

}  // namespace quillon
