// Calls into libraries of other makers. What such a library raises and does not handle itself, an
// access violation or an exception of its language, ends the call and not the process.
//
// What the library had locked or half done stays so, and what destroys this program's own memory
// or stack cannot be helped. Faults in threads of the library's own are not seen here.
#pragma once

#include <type_traits>

namespace quillon {

// Whether the function returned. It must not throw a C++ exception of this program.
bool RunGuarded(void (*function)(void*), void* context) noexcept;

// `call` holds the library's function and its arguments, and nothing to be destroyed.
template <class Call>
bool Guarded(Call&& call) noexcept {
  using Callable = std::remove_reference_t<Call>;
  return RunGuarded([](void* context) { (*static_cast<Callable*>(context))(); },
                    const_cast<std::remove_const_t<Callable>*>(&call));
}

}  // namespace quillon
