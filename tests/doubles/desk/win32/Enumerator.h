// The items of a collection for a client's "For Each": those that there were when it began.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <vector>

#include "desk/win32/Values.h"

namespace desk {

ComPtr<IEnumVARIANT> Enumerate(std::vector<Variant> items);

}  // namespace desk
