// Memory that a function of the system has allocated and leaves to LocalFree.
#pragma once

#include <windows.h>
#include <memory>

namespace quillon {

struct LocalDeleter {
  void operator()(void* memory) const noexcept { LocalFree(memory); }
};
using LocalMemory = std::unique_ptr<void, LocalDeleter>;

}  // namespace quillon
