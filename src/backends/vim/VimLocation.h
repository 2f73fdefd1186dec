// Where vim32.dll is: along the path, or beside the mail program that WIN.INI names.
#pragma once

#include <string>

namespace quillon {

class Workstation;

inline constexpr const char* kVimLibrary = "vim32.dll";

struct VimLocation {
  bool found = false;     // whether the library loads from there
  std::string directory;  // empty: along the path
};

// A library that does not load is looked for all the same where the mail program is.
VimLocation LocateVim(Workstation& workstation);

}  // namespace quillon
