// The system's dialog for opening files.
#pragma once

#include <windows.h>
#include <string>
#include <vector>

namespace quillon {

struct ChosenFiles {
  std::vector<std::string> paths;  // none when the user has cancelled
  bool tooMany = false;            // more than there is room for at once; none of them are here
};

ChosenFiles ChooseFiles(HWND owner);

}  // namespace quillon
