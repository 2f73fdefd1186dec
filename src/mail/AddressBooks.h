// The address books of a mail system, as its back end offers them.
//
// Results are those of BackEnd. A function that the system has not throws ServerError 754. Calls
// log in first where that is needed; they see the Server that the client's AddressBook works on.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "mail/BackEnd.h"

namespace quillon {

struct AddressEntry {
  std::string name;
  std::string address;  // may be empty
  bool isGroup = false;
};

// Who is to get the message.
struct AddressChoice {
  std::vector<AddressEntry> to;
  std::vector<AddressEntry> cc;
  std::vector<AddressEntry> bcc;
};

// An address book that is open. It lets go of what it holds when it is destroyed, also after its
// session has ended.
class OpenAddressBook {
 public:
  OpenAddressBook() = default;
  virtual ~OpenAddressBook() = default;
  OpenAddressBook(const OpenAddressBook&) = delete;
  OpenAddressBook& operator=(const OpenAddressBook&) = delete;

  // Appends the next entries in the order of the book: as many as come in one go, so that a book of
  // 20,000 is walked without waiting. `more` is false behind the last one. Throws ServerError 751
  // when the session it was opened in has ended.
  virtual MailResult Fetch(MailRequest& request, std::vector<AddressEntry>& entries,
                           bool& more) = 0;

  // Whether the session it was opened in has ended. For systems whose sessions are not in the
  // instance: where they are, the AddressBook sees for itself.
  virtual bool HasEnded() const { return false; }

  // What the user has chosen in the window. True: that is what this book now consists of.
  virtual bool TakeChoice(const AddressChoice&) { return false; }
};

// To be thrown by Open.
ServerError NoSuchAddressBook();

class AddressBooks {
 public:
  AddressBooks() = default;
  virtual ~AddressBooks() = default;
  AddressBooks(const AddressBooks&) = delete;
  AddressBooks& operator=(const AddressBooks&) = delete;

  virtual MailResult Names(MailRequest& request, std::vector<std::string>& names) = 0;

  // The first one when the name is empty. The name is one of those that Names gives; a book that is
  // not there all the same, or a system without any, is NoSuchAddressBook.
  virtual MailResult Open(MailRequest& request, const std::string& name,
                          std::unique_ptr<OpenAddressBook>& book) = 0;

  // Whether Show is worth calling.
  virtual bool HasWindow() const { return false; }

  // Lets the user choose recipients in the mail system's own window, which begins with those in
  // `choice`. Throws ServerError 522 when he closes it without; `choice` is then as it was.
  virtual MailResult Show(MailRequest& request, AddressChoice& choice);
};

}  // namespace quillon
