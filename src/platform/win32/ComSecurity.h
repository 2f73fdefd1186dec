// Who may have COM start the program, and call its objects: only who is on this machine, and nobody
// of less integrity than programs of users have, as the content process of a browser.
#pragma once

#include <windows.h>
#include <cstdint>
#include <string>
#include <vector>

namespace quillon {

// For the value LaunchPermission of the AppID: every account, which then has a process of its own
// account. Empty when the system cannot make it.
std::vector<std::uint8_t> LaunchPermission();

// Who may call: the account of the process, the system and the administrators.
std::vector<std::uint8_t> AccessPermission();

// Lets COM hold to that in this process, or to what an administrator has put for the AppID instead.
// After CoInitializeEx, and before anything else of COM.
HRESULT SecureCalls(REFGUID appId);

}  // namespace quillon
