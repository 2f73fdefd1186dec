#include "desknotes/NotesObject.h"

#include <atomic>

namespace desk {
namespace {

constexpr unsigned long kServerUnavailable = 0x800706BA;  // RPC_S_SERVER_UNAVAILABLE
constexpr unsigned long kDisconnected = 0x80010108;       // RPC_E_DISCONNECTED

std::atomic<unsigned>& Deaths() {
  static std::atomic<unsigned> count{0};
  return count;
}

// A number of the product's own, or one that the call itself fails with. The client's death is one
// for all its objects.
void FailNotes(unsigned long number) {
  if (number < 0x10000) number += 0x80040000;
  if ((number & 0xFFFF0000) == 0x80040000) throw MemberError(static_cast<NotesError>(number));
  if (number == kServerUnavailable || number == kDisconnected) ++Deaths();
  throw CallError(static_cast<HRESULT>(number));
}

constexpr FaceFacts kFace{"NotesSession", static_cast<HRESULT>(NotesError::kFailed), FailNotes};

}  // namespace

const char* NameOf(NotesError error) noexcept {
  switch (error) {
    case NotesError::kNotOpen:
      return "Database has not been opened yet";
    case NotesError::kNoSuchDocument:
      return "Invalid universal id";
    case NotesError::kNoSuchName:
      return "Unable to send mail, no match found in Name & Address Book(s)";
    case NotesError::kManyNames:
      return "Unable to send mail, multiple matches found in Name & Address Book(s)";
    default:
      return "Notes error";
  }
}

MemberError Failed(const std::string& words) {
  return {static_cast<HRESULT>(NotesError::kFailed), "Notes error: " + words};
}

NotesObject::NotesObject() : era_(Deaths()) {}

void NotesObject::CheckUsable() const {
  if (era_ != Deaths()) throw CallError(static_cast<HRESULT>(kServerUnavailable));
}

const FaceFacts& NotesObject::Face() const {
  return kFace;
}

}  // namespace desk
