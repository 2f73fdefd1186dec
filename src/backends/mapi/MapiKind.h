// Which of the old MAPI libraries the workstation has, told by its size.
#pragma once

#include <cstdint>

namespace quillon {

class FileSystem;
class Workstation;

// 1 to 6. The sizes are those of the libraries that were once delivered.
int MapiKindOf(std::uint64_t bytes);

// Of MAPI.DLL in the directory SYSTEM32 of Windows, or else in the system's directory; 0 when there
// is none.
int FindMapiKind(FileSystem& files, Workstation& workstation);

}  // namespace quillon
