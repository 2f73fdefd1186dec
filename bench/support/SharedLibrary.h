// A library that a benchmark alone wants: bound when it runs.
#pragma once

#include <dlfcn.h>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace quillon::bench {

class SharedLibrary {
 public:
  // Throws when the library, which comes with the package, is not there.
  SharedLibrary(const char* file, const char* package) : library_(dlopen(file, RTLD_NOW)) {
    if (library_ == nullptr) {
      throw std::runtime_error(std::string("the package ") + package + " is missing");
    }
  }

  template <typename Function>
  void Bind(Function& function, const char* name) const {
    function = reinterpret_cast<std::remove_reference_t<Function>>(dlsym(library_, name));
    if (function == nullptr) throw std::runtime_error(std::string(name) + " is missing");
  }

 private:
  void* const library_;  // for the life of the process
};

inline SharedLibrary GMimeLibrary() {
  return {"libgmime-3.0.so.0", "libgmime-3.0-0"};
}

}  // namespace quillon::bench
