// "MAPI.Session": the object that clients create, and the root of the tree.
#pragma once

#include <optional>

#include "desk/win32/TheStore.h"
#include "olemsg32/Object.h"

namespace desk {

class Session final : public ObjectOf<Session> {
 public:
  static constexpr std::string_view kName = "Session";
  static constexpr long kNumber = 0;
  static constexpr std::string_view kDefault = "Name";
  static std::span<const MemberOf<Session>> Members();

  Session() : ObjectOf(this, nullptr) {}

  void CheckUsable() const override;

  const Account& User() const;  // throws kNotInitialized
  // Counts the logons and logoffs: what was got in one is nothing in another.
  unsigned Era() const noexcept { return era_; }

  // The mailbox of a store's identifier, the user's for none. Throws kNotFound.
  std::string Mailbox(const std::string& storeId) const;
  // As a client asks for a folder; an empty identifier is the root folder.
  Folder FindFolder(const std::string& folderId, const std::string& storeId) const;

 private:
  Variant Logon(const Arguments& arguments);
  Variant Logoff();
  Variant GetMessage(const Arguments& arguments);
  Variant DefaultFolder(const char* name);

  std::optional<Account> user_;
  unsigned era_ = 0;
};

// Any object but the session: it lives in the session of its parent.
template <class T>
class ChildOf : public ObjectOf<T> {
 public:
  void CheckUsable() const override {
    this->Owner().CheckUsable();
    if (this->Owner().Era() != era_) throw MemberError(MapiError::kInvalidObject);
  }

 protected:
  explicit ChildOf(Object& parent)
      : ObjectOf<T>(&parent.Owner(), &parent), era_(parent.Owner().Era()) {}

 private:
  unsigned era_;
};

}  // namespace desk
