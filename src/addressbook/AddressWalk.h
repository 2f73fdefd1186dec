// A walk through the entries of an open address book. Entries are fetched when the walk comes to
// them, and kept, so that it goes back as well.
//
// The walk stands at an entry, before the first one, or behind the last; in an empty book it is
// both. It begins at the first entry, which is fetched when it is asked for. A step that cannot be
// made because entries cannot be fetched leaves the walk where it is, and keeps what has been
// fetched.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "mail/AddressBooks.h"

namespace quillon {

class AddressWalk {
 public:
  explicit AddressWalk(std::unique_ptr<OpenAddressBook> book) : book_(std::move(book)) {}

  MailResult MoveFirst(MailRequest& request);
  MailResult MoveNext(MailRequest& request);
  MailResult MoveLast(MailRequest& request);
  MailResult MovePrevious(MailRequest& request);

  // The first entry whose name begins so becomes the current one; the walk stays when there is
  // none.
  MailResult Find(MailRequest& request, const std::string& beginning, bool& found);

  // Null before the first entry and behind the last.
  MailResult Current(MailRequest& request, const AddressEntry*& entry);
  MailResult Marks(MailRequest& request, bool& isBefore, bool& isBehind);
  MailResult All(MailRequest& request, const std::vector<AddressEntry>*& entries);

  bool HasEnded() const { return book_->HasEnded(); }

  // The walk begins anew when the book now consists of what was chosen.
  void TakeChoice(const AddressChoice& choice);

 private:
  static constexpr std::ptrdiff_t kBefore = -1;

  // Fetches until there are more entries than `index`, or no more to come.
  MailResult Reach(MailRequest& request, std::size_t index);
  MailResult ReachCurrent(MailRequest& request);
  MailResult Fetch(MailRequest& request);

  std::unique_ptr<OpenAddressBook> book_;
  std::vector<AddressEntry> entries_;
  bool isComplete_ = false;
  std::size_t fruitless_ = 0;    // fetches in a row that brought nothing
  std::ptrdiff_t position_ = 0;  // kBefore, an entry, or their number
};

}  // namespace quillon
