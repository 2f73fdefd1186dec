// What the back end of VIM asks of the system.
#pragma once

#include "ports/FileSystem.h"
#include "ports/LocalClock.h"
#include "ports/LoginPrompt.h"
#include "ports/MessageBox.h"
#include "ports/Vim.h"
#include "ports/Workstation.h"

namespace quillon {

struct VimPorts {
  Vim& library;
  Workstation& workstation;
  FileSystem& files;
  const LocalClock& clock;
  MessageBoxPort& messageBox;
  LoginPrompt& loginPrompt;
};

}  // namespace quillon
