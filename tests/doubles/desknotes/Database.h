// "NotesDatabase": the mail file of an account, "mail\ann.nsf", or the address book, "names.nsf".
#pragma once

#include "desknotes/NotesObject.h"

namespace desk {

class DatabaseObject final : public NotesObjectOf<DatabaseObject> {
 public:
  static constexpr std::string_view kName = "NotesDatabase";
  static std::span<const MemberOf<DatabaseObject>> Members();

  // Not open yet; `user` is whose client it is.
  DatabaseObject(Account user, std::string server, std::string file)
      : user_(std::move(user)), server_(std::move(server)), file_(std::move(file)) {}

  bool Open(const std::string& server, const std::string& file);

 private:
  void CheckOpen() const;
  bool IsBook() const { return !owner_; }
  Variant OpenMail();
  Variant View(const std::string& name) const;
  Variant Views() const;
  Variant Document(const std::string& universalId) const;

  Account user_;
  std::string server_;
  std::string file_;
  bool open_ = false;
  std::optional<Account> owner_;  // none: the address book
};

}  // namespace desk
