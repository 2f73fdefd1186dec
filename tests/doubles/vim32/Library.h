// What is open in this process, the desk behind it, and the gate that every call passes.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

#include "Records.h"
#include "desk/Store.h"

namespace vim32 {

// Thrown by what a call does: the status it returns.
struct Refusal {
  std::uint32_t status;
};

struct Session {
  desk::Account account;
};
struct Container {
  desk::Folder folder;
};
struct OpenMessage {
  desk::Message message;
  std::vector<std::string> parts;  // of the text, in the ANSI code page
};
struct Draft {
  desk::Message message;
  bool keep = true;
};
struct Book {
  std::vector<desk::Entry> entries;  // as they were when it was opened
};

using Object = std::variant<Session, Container, OpenMessage, Draft, Book>;

class Library {
 public:
  Library();

  desk::Store store;
  std::mutex mutex;
  int initialized = 0;
  // By the message and the category: what SetMessageCategory has put there.
  std::map<std::string, std::string> copies;

  // The session is 0 for a session itself.
  Handle Open(Handle session, Object object);
  // Throws for a handle that is not open, or is of something else, or whose session is closed.
  template <class Kind>
  Kind& Get(Handle handle) {
    return std::get<Kind>(Find(handle, {Object(Kind()).index()}));
  }
  Handle SessionOf(Handle handle) const { return objects_.at(handle).session; }
  const desk::Account& AccountOf(Handle handle) { return Get<Session>(SessionOf(handle)).account; }
  template <class... Kinds>
  void Close(Handle handle) {
    Find(handle, {Object(Kinds()).index()...});
    objects_.erase(handle);
  }
  void Discard(Handle draft);
  // "sessions=0 containers=0 messages=0 drafts=0 books=0"
  std::string WhatIsOpen() const;
  void Forget() { objects_.clear(); }

  // References to messages stay good as long as the process lives.
  Ref ReferenceOf(const std::string& id);
  // As it is now; throws when there is no such message (any more).
  desk::Message Read(Handle container, Ref reference);

 private:
  struct Opened {
    Handle session;
    Object object;
  };
  Object& Find(Handle handle, std::initializer_list<std::size_t> kinds);

  std::map<Handle, Opened> objects_;
  Handle last_ = 0x2000;
  std::vector<std::string> ids_;
};

Library& TheLibrary();

// A function, and the selector that says what one of several uses it is called for.
struct Function {
  const char* name;
  std::uint32_t use = 0;
};

// Writes the call to the log and does what the fault file says, for all its uses or, as in
// "VIMSetMessageHeader:91 27", for one. Throws a status, that of the file or the one of a call that
// is made before VIMInitialize.
void Enter(const Function& function, const std::string& arguments);

// A whole call. Nothing leaves it but a status.
template <class Body>
std::uint32_t Call(const Function& function, const std::string& arguments, Body body) noexcept {
  try {
    Enter(function, arguments);
    Library& library = TheLibrary();
    const std::lock_guard lock(library.mutex);
    body(library);
    return kSuccess;
  } catch (const Refusal& refusal) {
    return refusal.status;
  } catch (...) {
    return kFailure;
  }
}

}  // namespace vim32
