// What all objects of "Notes.NotesSession" have in common, and the numbers that they fail with.
#pragma once

#include "desk/win32/DispatchObject.h"
#include "desk/win32/TheStore.h"

namespace desk {

// Published numbers, as error records carry them.
enum class NotesError : unsigned long {
  kFailed = 0x80040000 + 4000,
  kNotOpen = 0x80040000 + 4063,
  kNoSuchDocument = 0x80040000 + 4091,
  kNoSuchName = 0x80040000 + 4294,
  kManyNames = 0x80040000 + 4295,
};
const char* NameOf(NotesError error) noexcept;

// For kFailed, which says more by its words.
MemberError Failed(const std::string& words);

class NotesObject : public DispatchObject {
 public:
  // An object of a client that has died fails as its proxy would.
  void CheckUsable() const override;

 protected:
  NotesObject();

  const FaceFacts& Face() const override;

 private:
  unsigned era_;
};

// T has `kName` and `Members()`.
template <class T>
class NotesObjectOf : public TableObject<T, NotesObject> {
 public:
  // The classes have no default members.
  static constexpr std::string_view kDefault{};
};

}  // namespace desk
