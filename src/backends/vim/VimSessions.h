// The sessions with VIM: one for each Server that has logged in, and those that clients have handed
// in, which are used as they are and never closed here. Each has one message container open, the
// last one that was asked for, and address books, which end with it.
//
// Failures are thrown: VimFailure, and ServerError 522 and 544 (login data), 546 (the post office).
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "backends/vim/VimPorts.h"
#include "mail/BackEnd.h"

namespace quillon {

class VimSessions {
 public:
  explicit VimSessions(const VimPorts& ports) : ports_(ports) {}

  // Does nothing when the instance has a session.
  void Open(MailRequest& request);
  // The same for an operation that needs a session: the user may be asked.
  void OpenOnDemand(MailRequest& request);

  // Ends a session of ours; a client's is forgotten.
  void Close(InstanceState& instance);
  // The client takes another handle in place of that of the instance. What is open in a session of
  // his is closed, whatever VIM says to it: his session may be gone.
  void Change(const InstanceState& instance, std::int32_t handle);
  // Ends everything, whatever VIM says to it.
  void End();

  // The container of that name, in the session of the instance, which is open; the inbox for the
  // empty name.
  vim::Handle Container(const InstanceState& instance, const std::string& name);

  // An address book, opened in the session of the instance, which is open. Closing it does nothing
  // when it has ended with its session, and takes no notice of what VIM says to it.
  vim::Handle OpenBook(const InstanceState& instance, const std::string& name);
  void CloseBook(std::uint64_t sessionNumber, vim::Handle book);
  bool HasBook(std::uint64_t sessionNumber, vim::Handle book) const;

  // Which of all sessions this is that have been worked with; 0 when there is none. A handle may be
  // used again by VIM, a number is not.
  std::uint64_t NumberOf(const InstanceState& instance) const;

  // What the last login has found VIM's maker to be: vim::kNotes, or another number.
  std::uint32_t Product() const noexcept { return product_; }

  static vim::Handle HandleOf(const InstanceState& instance);

 private:
  struct Session {
    std::uint64_t number = 0;
    bool isOurs = false;
    vim::Handle container = 0;
    std::string containerName;
    std::vector<vim::Handle> books;
  };

  void Initialize();
  void QueryProduct();
  vim::Handle LogOn(MailRequest& request);
  VimLogin LoginData(MailRequest& request, VimLogin defaults);
  void CheckPostOffice(const InstanceState& instance) const;
  void CloseContainer(Session& session);
  void CloseBooks(Session& session);
  void ForgetClients(vim::Handle handle);

  VimPorts ports_;
  bool initialized_ = false;
  std::uint32_t product_ = 0;
  std::uint64_t count_ = 0;
  std::map<vim::Handle, Session> sessions_;
};

}  // namespace quillon
