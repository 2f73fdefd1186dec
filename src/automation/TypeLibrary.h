// The type library of the program: what its dual interfaces and classes are called and take.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <string>

#include "platform/win32/ComPtr.h"

namespace quillon {

class TypeLibrary {
 public:
  // Loads it from a .tlb file or from the resources of a program, without registering it. Throws
  // HresultError.
  explicit TypeLibrary(const std::wstring& file);

  ITypeLib* Get() const noexcept { return library_.Get(); }
  ComPtr<ITypeInfo> Info(REFGUID guid) const;

 private:
  ComPtr<ITypeLib> library_;
};

// The full path of the running program.
std::wstring ProgramPath();

}  // namespace quillon
