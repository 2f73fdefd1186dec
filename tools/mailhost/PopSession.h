// The server's side of POP3 (RFC 1939), with CAPA, TOP and UIDL.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Maildir.h"
#include "Replier.h"
#include "Session.h"

namespace mailhost {

// What all POP3 sessions share. Without a user name any login is good.
struct Maildrop {
  Maildir* store = nullptr;  // null: an empty maildrop
  std::optional<std::string> user{};
  std::string password{};
  bool exclusive = true;  // one session at a time
  bool taken = false;
};

class PopSession : public Session {
 public:
  // `rules` and `maildrop` must outlive the session.
  PopSession(Connection& connection, const std::vector<FaultRule>& rules, Maildrop& maildrop);
  ~PopSession() override;
  PopSession(const PopSession&) = delete;
  PopSession& operator=(const PopSession&) = delete;

  void OnOpen() override;
  void OnLine(std::string_view line) override;
  void OnBadLine(std::string_view why) override;

 private:
  enum class State { kAuthorization, kTransaction };
  struct Command;
  static const Command kCommands[];

  void User(std::string_view argument);
  void Pass(std::string_view argument);
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

  Replier replier_;
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
