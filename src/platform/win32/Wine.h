// Where Windows is Wine, which takes some calls another way.
#pragma once

#include <windows.h>

namespace quillon {

inline bool IsWine() {
  return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

}  // namespace quillon
