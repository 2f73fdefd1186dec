// "Notes.NotesSession": the object that clients create. Its user is the desk's default account, or
// the one that the fault file names: "NotesUser bob".
#pragma once

#include "desknotes/NotesObject.h"

namespace desk {

class SessionObject final : public NotesObjectOf<SessionObject> {
 public:
  static constexpr std::string_view kName = "NotesSession";
  static std::span<const MemberOf<SessionObject>> Members();

  // Throws std::exception when the store has no such account.
  SessionObject();

 private:
  Account user_;
};

}  // namespace desk
