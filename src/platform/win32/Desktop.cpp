#include "platform/win32/Desktop.h"

#include <windows.h>

namespace quillon {
namespace {

bool StationIsVisible() {
  USEROBJECTFLAGS flags{};
  return GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags,
                                   nullptr) != FALSE &&
         (flags.dwFlags & WSF_VISIBLE) != 0;
}

// Since Windows Vista users have sessions of their own, and this one is for services: their station
// may be visible, but to nobody.
bool IsSessionOfServices() {
  OSVERSIONINFOEXW vista{};
  vista.dwOSVersionInfoSize = sizeof vista;
  vista.dwMajorVersion = 6;
  const auto atLeast = VerSetConditionMask(0, VER_MAJORVERSION, VER_GREATER_EQUAL);
  DWORD session = 1;
  return VerifyVersionInfoW(&vista, VER_MAJORVERSION, atLeast) != FALSE &&
         ProcessIdToSessionId(GetCurrentProcessId(), &session) != FALSE && session == 0;
}

}  // namespace

bool HasDesktop() {
  return StationIsVisible() && !IsSessionOfServices();
}

}  // namespace quillon
