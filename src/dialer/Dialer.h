// The public class Dialer: opens a dial-up connection through the Remote Access Service, and closes
// it.
//
// Every failure is a ServerError with the number of the service + 7000; 7000 itself stands for one
// that has no number. While Dial blocks its caller, and HangUp waits for the line, other calls are
// served, also of the same object.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "core/ServerError.h"
#include "core/ShortBool.h"
#include "mail/SharedState.h"
#include "ports/EventLoop.h"
#include "ports/Ras.h"
#include "ports/Workstation.h"

namespace quillon {

class MessageBoxPort;
class SideCall;

// What all objects of the class work with.
struct DialerEnvironment {
  SharedState& shared;
  EventLoop& loop;
  RasLibrary& library;
  Workstation& workstation;
  MessageBoxPort& messageBox;
  TickCount linePatience = 3000;  // for a line to be free after a connection was closed
  std::chrono::milliseconds partingPatience{2000};  // for a dial to fail when the program ends
};

class Dialer {
 public:
  enum class Field { Domain, Password, UserName, PhoneNumber, EntryName };

  // The library may be missing; Dial, HangUp and ActiveEntryName fail then.
  explicit Dialer(DialerEnvironment& environment);
  // A connection that is open stays so.
  ~Dialer();
  Dialer(const Dialer&) = delete;
  Dialer& operator=(const Dialer&) = delete;

  std::string Get(Field field) const;
  void Put(Field field, const std::string& value);

  void Dial();
  // While Dial is at work, ends that.
  void HangUp();

  // That of the connection this object has made, or of the first one of the system's list; empty
  // when there is none.
  std::string ActiveEntryName() const;
  std::int16_t OSType() const noexcept { return kind_; }
  std::string WindowsVersion() const;
  ShortBool DialerAvailable() const;

 private:
  struct Attempt;

  template <class Body>
  decltype(auto) Run(const char* undetermined, Body&& body) const;
  std::shared_ptr<Ras> LibraryOrNull() const;
  std::shared_ptr<Ras> Library() const;  // throws when there is none

  std::uint32_t Finish(const SideCall& call, Attempt& attempt) const;
  bool Await(const SideCall& call, Attempt& attempt) const;
  bool Pause(TickCount until) const;
  void AwaitFreeLine(Ras& library, RasHandle connection) const;

  ServerError Failure(Ras& library, std::uint32_t number, const char* undetermined) const;
  void Show(const std::string& text) const;

  DialerEnvironment& environment_;
  const SystemVersion system_;
  const std::int16_t kind_;
  const RasLayout layout_;
  mutable std::shared_ptr<Ras> library_;
  std::array<std::string, 5> texts_;
  RasHandle connection_ = 0;
  std::shared_ptr<Attempt> attempt_;  // while Dial is at work
};

}  // namespace quillon
