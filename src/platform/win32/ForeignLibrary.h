// A library of another maker, loaded when it is first needed. It stays loaded unless it is let go
// of, because it may hold sessions, and its threads may be at work until the process ends.
#pragma once

#include <windows.h>
#include <string>
#include <utility>

#include "platform/win32/FaultGuard.h"
#include "platform/win32/LibrarySearch.h"

namespace quillon {

class ForeignLibrary {
 public:
  explicit ForeignLibrary(std::wstring name) : name_(std::move(name)) {}
  ForeignLibrary(const ForeignLibrary&) = delete;
  ForeignLibrary& operator=(const ForeignLibrary&) = delete;

  // Loads it now: from where libraries are looked for, or from a directory. Whether it is loaded.
  bool Load();
  bool LoadFrom(const LibraryDirectory& place);
  // Lets go of it: for one that leaves nothing of its own behind.
  void Unload();

  // Null when the library, or the function in it, is missing. A library that was missing is looked
  // for again the next time.
  template <class Function>
  Function* Find(const char* function) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(Address(function)));
  }

  // Calls a function of it. `missing` when there is none, `broken` when it raised a fault.
  template <class Result, class... Parameters, class... Arguments>
  Result Call(const char* function, Result(WINAPI*)(Parameters...), Result missing, Result broken,
              Arguments... arguments) {
    auto* const found = Find<Result WINAPI(Parameters...)>(function);
    if (found == nullptr) return missing;
    Result result = broken;
    Guarded([&] { result = found(arguments...); });
    return result;
  }

 private:
  FARPROC Address(const char* function);
  bool Open(const std::wstring& path);

  const std::wstring name_;
  HMODULE module_ = nullptr;
};

}  // namespace quillon
