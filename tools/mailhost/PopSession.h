// The server's side of POP3 (RFC 1939), with the extensions of its service.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "LoginDialogue.h"
#include "Maildir.h"
#include "Replier.h"
#include "Service.h"
#include "Session.h"

namespace mailhost {

// What all POP3 sessions share.
struct Maildrop {
  Maildir* store = nullptr;  // null: an empty maildrop
  bool exclusive = true;     // one session at a time
  bool taken = false;
};

class PopSession : public Session {
 public:
  // `service` and `maildrop` must outlive the session. With `secured` TLS comes before anything
  // else.
  PopSession(Connection& connection, const Service& service, bool secured, Maildrop& maildrop);
  ~PopSession() override;
  PopSession(const PopSession&) = delete;
  PopSession& operator=(const PopSession&) = delete;

  void OnOpen() override;
  void OnSecured() override;
  void OnLine(std::string_view line) override;
  void OnBadLine(std::string_view why) override;
  bool ExpectsSecret() const override { return login_.Active() || replier_.AsksForSecret(); }

 private:
  enum class State { kAuthorization, kTransaction };
  struct Command;
  static const Command kCommands[];

  void User(std::string_view argument);
  void Pass(std::string_view argument);
  void Apop(std::string_view argument);
  void Auth(std::string_view argument);
  void Stls(std::string_view argument);
  void Stat(std::string_view argument);
  void List(std::string_view argument);
  void Uidl(std::string_view argument);
  void Top(std::string_view argument);
  void Retr(std::string_view argument);
  void Dele(std::string_view argument);
  void Rset(std::string_view argument);
  void Noop(std::string_view argument);
  void Capa(std::string_view argument);
  void Quit(std::string_view argument);

  bool Offers(std::string_view word) const;
  bool LacksTls() const { return service_.requiresTls && connection_.Tls() == nullptr; }
  void Welcome();
  void Response(std::string_view line);
  void AnswerLogin(const LoginDialogue::Answer& answer);
  // The reply to a login, and what follows from it.
  void EndLogin(bool good);
  void OpenMaildrop();
  void LeaveMaildrop();
  bool RemoveDeleted();
  // The index of the message that `number` names; replies and returns nothing when there is none.
  std::optional<std::size_t> FindMessage(std::string_view number);
  // Empty when the message is gone, which is then said.
  UniqueFd OpenMessage(std::size_t index);
  // The reply of LIST and UIDL: what `value` says of one message, or of every one.
  template <typename Value>
  void ReplyListing(std::string_view argument, Value value);
  std::string Summary() const;

  Connection& connection_;
  const Service& service_;
  bool opensSecured_;
  Replier replier_;
  LoginDialogue login_;
  std::string timestamp_;  // of the greeting, for APOP
  int refusedLogins_ = 0;
  Maildrop& maildrop_;
  State state_ = State::kAuthorization;
  bool holdsMaildrop_ = false;
  std::optional<std::string> user_;
  std::vector<StoredMessage> messages_;
  std::vector<bool> deleted_;
  std::uint64_t remaining_ = 0;      // messages not deleted
  std::uint64_t remainingSize_ = 0;  // their bytes
};

}  // namespace mailhost
