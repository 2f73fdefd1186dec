// Who may change a file, as its access control list tells.
#pragma once

#include <string>

namespace quillon {

// Whether the list of the file or directory, or its lack of one, gives a right to change it, or
// what is made in it, to anybody but the user, the administrators and the system. True also when
// there is no telling. What is denied again elsewhere in the list counts as given.
bool OthersMayChange(const std::wstring& path);

}  // namespace quillon
