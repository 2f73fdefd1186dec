#include "backends/vim/VimLocation.h"

#include <utility>

#include "ports/Workstation.h"

namespace quillon {

namespace {

// The part of a path up to its last backslash.
std::string DirectoryOf(const std::string& path) {
  const auto end = path.rfind('\\');
  return end == std::string::npos ? std::string() : path.substr(0, end);
}

}  // namespace

VimLocation LocateVim(Workstation& workstation) {
  if (workstation.LibraryLoads(kVimLibrary, {})) return {true, {}};
  auto program = workstation.ProfileValue("LotusMail", "Program");
  if (program.empty()) program = workstation.ProfileValue("cc:Mail", "ProgramPath");
  auto directory = DirectoryOf(program);
  const bool found = !directory.empty() && workstation.LibraryLoads(kVimLibrary, directory);
  return {found, std::move(directory)};
}

}  // namespace quillon
