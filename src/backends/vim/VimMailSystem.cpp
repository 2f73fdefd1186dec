#include "backends/vim/VimMailSystem.h"

#include "backends/vim/VimErrorText.h"
#include "ports/Workstation.h"

namespace quillon {

namespace {

constexpr const char* kLibrary = "vim32.dll";

// The part of a path up to its last backslash.
std::string DirectoryOf(const std::string& path) {
  const auto end = path.rfind('\\');
  return end == std::string::npos ? std::string() : path.substr(0, end);
}

}  // namespace

VimMailSystem::VimMailSystem(Workstation& workstation, BackEnd* backEnd)
    : MailSystem(MailFamily::Vim, backEnd), workstation_(workstation) {}

// The library need not be on the path: then it is beside the mail program.
bool VimMailSystem::IsPresent() {
  if (workstation_.LibraryLoads(kLibrary, {})) return true;
  auto program = workstation_.ProfileValue("LotusMail", "Program");
  if (program.empty()) program = workstation_.ProfileValue("cc:Mail", "ProgramPath");
  const auto directory = DirectoryOf(program);
  return !directory.empty() && workstation_.LibraryLoads(kLibrary, directory);
}

std::string VimMailSystem::Library() const {
  return kLibrary;
}

std::string VimMailSystem::ErrorText(MailSystemId, std::int32_t number) const {
  return VimErrorText(number);
}

}  // namespace quillon
