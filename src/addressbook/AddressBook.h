// The AddressBook object: the public members, free of COM. It works on a Server, which it keeps
// alive, and on the address books of that Server's mail system.
//
// Members fail with ServerError: 750 without a Server, 752 when no mail system is found, 753 when
// it has no address books, 751 when none is open, in this order. A book is closed when another
// Server or mail system takes the place of the one it was opened in, and when its session has
// ended.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "addressbook/AddressWalk.h"
#include "core/ShortBool.h"
#include "core/Value.h"
#include "server/Server.h"

namespace quillon {

class AddressBook {
 public:
  AddressBook() = default;
  AddressBook(const AddressBook&) = delete;
  AddressBook& operator=(const AddressBook&) = delete;

  // Null for none.
  void SetMailObject(std::shared_ptr<Server> server);

  // The first one when the name is empty. A book that was open is closed when the new one is open.
  void OpenAddressBook(const std::string& bookName);
  void CloseAddressBook();

  void MoveFirst();
  void MoveNext();
  void MoveLast();
  void MovePrevious();
  // Names are compared without regard to case.
  ShortBool Find(const std::string& beginning);

  // Of the current entry; empty, or 0, where there is none.
  std::string Name();
  std::string Address();
  std::int16_t EntryType();

  ShortBool BeginMark();
  ShortBool EndMark();
  std::int32_t Count();
  std::vector<std::string> GetAddressBookItems(std::int16_t itemType);

  std::vector<std::string> BookNames();
  Value SessionHandle();

  // What the user chooses goes to the recipients of the message.
  void ShowAddressBook();

 private:
  // A book, and where it was opened.
  struct Open {
    AddressWalk walk;
    const AddressBooks* books;
    MailSystemId system;
    MailSessionSlot session;
  };
  using WalkCall = std::function<MailResult(AddressWalk& walk, MailRequest& request)>;

  const std::shared_ptr<Server>& RequireServer() const;
  void WithBooks(const char* member, MemberKind kind, const Server::AddressBookCall& call) const;
  void WithWalk(const char* member, MemberKind kind, const WalkCall& call);
  void Move(const char* member, MailResult (AddressWalk::*step)(MailRequest&));
  AddressEntry Entry(const char* member);
  ShortBool Mark(const char* member, bool before);
  bool StillOpen(const AddressBooks& books, const MailRequest& request) const;

  // A member may wait, and another call of the same client come in meanwhile: whoever works with
  // one of the two holds it.
  std::shared_ptr<Server> server_;
  std::shared_ptr<Open> open_;
};

}  // namespace quillon
