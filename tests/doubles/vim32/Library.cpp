#include "Library.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "desk/win32/Trouble.h"

namespace vim32 {

namespace {

constexpr std::uint32_t kMessageRef = 0x4D;  // so that not any number will do

}  // namespace

Library::Library() : store(desk::Store::Place()) {}

Library& TheLibrary() {
  static Library library;
  return library;
}

Handle Library::Open(Handle session, Object object) {
  last_ += 8;
  objects_.emplace(last_, Opened{session, std::move(object)});
  return last_;
}

Object& Library::Find(Handle handle, std::initializer_list<std::size_t> kinds) {
  const auto found = objects_.find(handle);
  if (found == objects_.end()) throw Refusal{kInvalidObject};
  Opened& opened = found->second;
  const bool right = std::find(kinds.begin(), kinds.end(), opened.object.index()) != kinds.end();
  if (!right || (opened.session != 0 && !objects_.contains(opened.session))) {
    throw Refusal{kInvalidObject};
  }
  return opened.object;
}

void Library::Discard(Handle draft) {
  const std::lock_guard lock(mutex);
  const auto found = objects_.find(draft);
  if (found != objects_.end() && std::holds_alternative<Draft>(found->second.object)) {
    objects_.erase(found);
  }
}

std::string Library::WhatIsOpen() const {
  const char* const names[] = {"sessions", "containers", "messages", "drafts", "books"};
  std::string text;
  for (std::size_t kind = 0; kind < std::size(names); ++kind) {
    const auto count = std::count_if(objects_.begin(), objects_.end(), [&](const auto& each) {
      return each.second.object.index() == kind;
    });
    text += (text.empty() ? "" : " ") + std::string(names[kind]) + "=" + std::to_string(count);
  }
  return text;
}

Ref Library::ReferenceOf(const std::string& id) {
  const auto found = std::find(ids_.begin(), ids_.end(), id);
  const auto number = static_cast<std::uint32_t>(found - ids_.begin());
  if (found == ids_.end()) ids_.push_back(id);
  return {number, kMessageRef};
}

desk::Message Library::Read(Handle container, Ref reference) {
  Get<Container>(container);
  if (reference.second != kMessageRef || reference.first >= ids_.size()) throw Refusal{kBadParam};
  const std::optional<desk::Message> message =
      store.Read(AccountOf(container).profile, ids_[reference.first]);
  if (!message) throw Refusal{kInvalidMessage};
  return *message;
}

// The trouble is made outside the lock, because it may be that other calls are let in.
void Enter(const Function& function, const std::string& arguments) {
  std::optional<std::string> word;
  bool ready = false;
  {
    Library& library = TheLibrary();
    const std::lock_guard lock(library.mutex);
    const std::string name = function.name;
    const std::string use = ":" + std::to_string(function.use);
    word = library.store.Call(name, function.use == 0 ? arguments : use + " " + arguments);
    if (!word) word = library.store.Word(name + use);
    ready = library.initialized > 0 || name == "VIMInitialize";
  }
  if (word) {
    char* end = nullptr;
    const unsigned long number = std::strtoul(word->c_str(), &end, 0);
    if (end != word->c_str() && *end == '\0') throw Refusal{number};
    desk::MakeTrouble(*word);
  }
  if (!ready) throw Refusal{kFailure};
}

}  // namespace vim32
