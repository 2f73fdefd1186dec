// How members of a face's objects fail.
#pragma once

#include <windows.h>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace desk {

// What the client gets as its error record.
class MemberError : public std::runtime_error {
 public:
  MemberError(HRESULT number, const std::string& text) : runtime_error(text), number_(number) {}
  // One of the face's own numbers, of which its NameOf gives the text.
  template <class Enum>
  requires std::is_enum_v<Enum>
  explicit MemberError(Enum error)
      : MemberError(static_cast<HRESULT>(error), std::string(NameOf(error))) {}

  HRESULT Number() const noexcept { return number_; }

 private:
  HRESULT number_;
};

// A call that does not fit the member: the number is the answer itself, there is no error record.
class CallError : public std::runtime_error {
 public:
  explicit CallError(HRESULT number, UINT argument = 0)
      : runtime_error("call"), number_(number), argument_(argument) {}

  HRESULT Number() const noexcept { return number_; }
  UINT Argument() const noexcept { return argument_; }  // its place in the caller's array

 private:
  HRESULT number_;
  UINT argument_;
};

}  // namespace desk
